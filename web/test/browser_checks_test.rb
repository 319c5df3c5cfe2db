# frozen_string_literal: true

require_relative "test_helper"

# What another site might make a browser send.
class BrowserChecksTest < WebTest
  def test_other_names_are_not_served
    %w[evil.example localhost.evil.example 1.2.3.4 [::2]:9000 a:b:c].each do |host|
      get "/login", {}, { "HTTP_HOST" => host }
      assert_equal 421, status, host
      refute_includes body, "evil"
    end
    get "/login", {}, { "HTTP_HOST" => "" }
    assert_equal 421, status
  end

  def test_our_own_names_are_served
    settings.serverName = "files.example.org"
    ["localhost", "localhost:9000", "127.0.0.1:9000", "[::1]:9000", "FILES.example.org",
     "files.example.org.:80",
     Socket.gethostname].each do |host|
      get "/login", {}, { "HTTP_HOST" => host }
      assert_equal 200, status, host
    end
  end

  def test_more_names_can_be_allowed
    settings.setValue(["search.example.org"], forKey: "webHostNames")
    get "/login", {}, { "HTTP_HOST" => "search.example.org" }
    assert_equal 200, status
  end

  def test_forms_of_other_origins_are_refused
    get "/login"
    form = { "token" => token, "name" => "ann", "password" => "annann" }
    ["http://evil.example", "null", "http://localhost:81", "file://localhost",
     "http://localhost.evil.example"].each do |origin|
      post "/login", form, { "HTTP_ORIGIN" => origin }
      assert_equal 403, status, origin
    end
    post "/login", form, { "HTTP_SEC_FETCH_SITE" => "cross-site" }
    assert_equal 403, status
    post "/login", form, { "HTTP_ORIGIN" => "http://localhost", "HTTP_SEC_FETCH_SITE" => "same-origin" }
    assert_equal 303, status
  end

  def test_another_site_may_link_here_and_embed_nothing
    log_in
    navigation = { "HTTP_SEC_FETCH_SITE" => "cross-site", "HTTP_SEC_FETCH_MODE" => "navigate",
                   "HTTP_SEC_FETCH_DEST" => "document" }
    get "/search", {}, navigation
    assert_equal 200, status
    %w[image script iframe empty].each do |destination|
      get "/search", {}, navigation.merge("HTTP_SEC_FETCH_DEST" => destination)
      assert_equal 403, status, destination
    end
  end

  def test_forms_need_their_token
    get "/login"
    [nil, "", "0" * 64, ["x"]].each do |wrong|
      post "/login", { "token" => wrong, "name" => "ann", "password" => "annann" }.compact
      assert_equal 403, status
    end
    stolen = token
    clear_cookies
    post "/login", { "token" => stolen, "name" => "ann", "password" => "annann" }
    assert_equal 403, status, "the token of another visitor"
  end

  def test_every_route_that_changes_something_needs_a_token
    log_in
    app.routes["POST"].each do |pattern, *|
      path = pattern.to_s.gsub(/:\w+/, "x")
      post path, {}
      assert_equal 403, status, path
    end
    refute_empty app.routes["POST"]
  end

  def test_nothing_is_changed_by_other_methods
    %w[PUT DELETE PATCH OPTIONS TRACE].each do |method|
      custom_request method, "/search"
      assert_equal 405, status, method
    end
  end

  def test_long_forms_are_not_read
    get "/login"
    post "/login", { "token" => token, "name" => "ann", "password" => "x" * 1_000_000 }
    assert_equal 413, status
  end

  def test_every_answer_tells_the_browser_what_it_may_do
    log_in
    ["/search", "/login", "/nothing-here", "/css/base.css"].each do |path|
      get path
      policy = last_response["Content-Security-Policy"]
      refute_includes policy, "unsafe"
      ["default-src 'none'", "object-src 'none'", "base-uri 'none'", "frame-ancestors 'none'"].each do |rule|
        assert_includes policy, rule, path
      end
      assert_equal "nosniff", last_response["X-Content-Type-Options"]
      assert_equal "same-origin", last_response["Cross-Origin-Resource-Policy"]
      assert_equal "same-origin", last_response["Referrer-Policy"]
    end
  end

  def test_what_was_found_is_not_kept
    write("plan.txt")
    log_in
    get "/search", { "q" => "plan" }
    assert_equal "no-store", last_response["Cache-Control"]
  end

  def test_what_is_for_everybody_is_kept_as_long_as_it_is_the_same
    get "/css/base.css"
    assert_equal "no-cache", last_response["Cache-Control"]
    get app.assets.address_of("css/base.css")
    assert_equal "public, max-age=31536000, immutable", last_response["Cache-Control"]
  end

  def test_pages_hold_no_script_or_style
    write("plan.txt")
    log_in
    ["/search?q=plan", "/search", "/saved"].each do |path|
      get path
      refute_match(/<script(?![^>]* src=)|\sstyle=|\son\w+=|javascript:/i, body, path)
    end
  end

  def test_errors_tell_nothing
    log_in
    app.get("/failing-for-a-test") { raise "secret /etc/shadow" }
    get "/failing-for-a-test"
    assert_equal 500, status
    refute_match(/secret|shadow|RuntimeError|\.rb/, body)
    assert_equal(["secret /etc/shadow"], events("failed").map { |event| event["text"] })
  ensure
    app.routes["GET"].reject! { |pattern, *| pattern.to_s == "/failing-for-a-test" }
  end

  def test_odd_requests_do_no_harm
    log_in
    ["/search?q[]=a&q[]=b", "/search?q[x]=1", "/search?q=%FF%FE", "/search?q=%00", "/search?page=99999999999",
     "/search?page=-1&q=a", "/search?q=a&sort=evil&order=x&view=y", "/search?q=#{'a' * 9000}",
     "/search?in[]=x",
     "/search?q=%22", "/item/", "/%2e%2e/%2e%2e/etc/passwd", "/css/../../app/server.rb",
     "/saved/new?q[]=1"].each do |path|
      get path
      assert_includes [200, 400, 404], status, path
    end
    assert_empty events("failed")
  end

  def test_so_many_searches_run_for_one_user
    limit = VistaroWeb::Security::RunningLimit.new(2)
    limit.run(1) do
      limit.run(1) do
        assert_raises(VistaroWeb::Security::RunningLimit::Exceeded) { limit.run(1) { flunk } }
        assert_equal :other, limit.run(2) { :other }
      end
      assert_equal :again, limit.run(1) { :again }
    end
  end
end
