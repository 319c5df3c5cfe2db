# frozen_string_literal: true

require_relative "test_helper"

# Logging in and out, and what is done against those who guess.
class LoginTest < WebTest
  Throttle = VistaroWeb::Security::LoginThrottle

  # Counts the passwords that are looked at, and has a clock of its own.
  class CountingLogin < VistaroWeb::Login
    attr_reader :checks

    def initialize(**options)
      @checks = 0
      super
    end

    private

    def check(name, password)
      @checks += 1
      super
    end
  end

  def use_login(now = [0.0], minimum_seconds: 0, wait: ->(_) {})
    throttle = Throttle.new(clock: -> { now[0] })
    login = CountingLogin.new(minimum_seconds: minimum_seconds, throttle: throttle, wait: wait)
    app.set(:login, login)
    login
  end

  # One attempt by a form that is ours, from the address `source`.
  def attempt(name, password, source: "10.0.0.1")
    get "/login"
    post "/login", { "token" => token, "name" => name, "password" => password }, { "REMOTE_ADDR" => source }
    status
  end

  def test_the_right_password_lets_in
    assert_equal 303, attempt("ann", "annann")
    get "/search"
    assert_equal 200, status
    assert_equal(["ann"], events("login_accepted").map { |event| event["name"] })
  end

  def test_unknown_user_and_wrong_password_are_answered_alike
    waited = []
    use_login(minimum_seconds: 5, wait: ->(seconds) { waited << seconds })
    answers = [%w[ann wrong], %w[nobody-at-all wrong], %w[root rootroot]].map do |name, password|
      [attempt(name, password), body.gsub(name, "").gsub(/[0-9a-f]{64}/, "")]
    end
    assert_equal [401], answers.map(&:first).uniq
    assert_equal 1, answers.map(&:last).uniq.size
    assert_equal 3, waited.size
    assert(waited.all? { |seconds| seconds > 4 })
  end

  def test_root_logs_in_only_where_the_settings_say_so
    assert_equal 401, attempt("root", "rootroot")
    settings.setValue(true, forKey: "rootLoginAllowed")
    assert_equal 303, attempt("root", "rootroot")
  end

  def test_of_10000_wrong_logins_few_are_looked_at
    now = [0.0]
    login = use_login(now)
    get "/login"
    form = { "token" => token, "name" => "ann", "password" => "wrong" }
    10_000.times do |number|
      now[0] += 0.01
      post "/login", form, { "REMOTE_ADDR" => "10.#{number % 5}.#{number / 250}.#{number % 250}" }
    end
    assert_equal 429, status
    assert_operator login.checks, :<=, 50
    assert_operator login.checks, :>=, 5
  end

  def test_many_accounts_from_one_address_are_throttled_too
    now = [0.0]
    login = use_login(now)
    get "/login"
    1000.times do |number|
      now[0] += 0.01
      post "/login", { "token" => token, "name" => "user#{number}", "password" => "wrong" }
      get "/login" if status == 401
    end
    assert_operator login.checks, :<=, 50
  end

  def test_an_address_that_a_request_claims_counts_for_nothing
    now = [0.0]
    login = use_login(now)
    get "/login"
    form = { "token" => token, "name" => "ann", "password" => "wrong" }
    500.times do |number|
      now[0] += 0.01
      header "X-Forwarded-For", "10.0.#{number / 250}.#{number % 250}"
      post "/login", form.merge("name" => "user#{number}")
    end
    assert_operator login.checks, :<=, 30
    assert_equal ["127.0.0.1"], events("login_throttled").map { |event| event["source"] }.uniq
  end

  def test_a_proxy_of_the_settings_is_believed
    settings.setValue(["127.0.0.1"], forKey: "webProxyAddresses")
    header "X-Forwarded-For", "10.6.6.6, 10.7.7.7"
    header "X-Forwarded-Proto", "https"
    header "X-Forwarded-Host", "evil.example"
    get "/login"
    assert_match(/\A__Host-vistaro=/, last_response["Set-Cookie"])
    # The cookie goes back over TLS alone, and to this server the proxy speaks without.
    header "Cookie", last_response["Set-Cookie"][/\A[^;]+/]
    post "/login", { "token" => token, "name" => "ann", "password" => "wrong" }
    assert_equal(["10.7.7.7"], events("login_refused").map { |event| event["source"] })
  end

  def test_others_cannot_lock_somebody_out
    now = [0.0]
    use_login(now)
    attempt("ann", "annann", source: "192.168.1.7")
    clear_cookies
    20.times { attempt("ann", "wrong", source: "10.9.9.9") }
    assert_equal 429, attempt("ann", "annann", source: "10.9.9.9")
    assert_equal 303, attempt("ann", "annann", source: "192.168.1.7"), "from where she always comes"
    clear_cookies
    now[0] += Throttle::LONGEST_WAIT
    assert_equal 303, attempt("ann", "annann", source: "172.16.0.1"), "from elsewhere, after the wait"
  end

  def test_a_new_session_at_each_login
    get "/login"
    before = rack_mock_session.cookie_jar["vistaro"]
    post "/login", { "token" => token, "name" => "ann", "password" => "annann" }
    first = rack_mock_session.cookie_jar["vistaro"]
    refute_equal before, first
    assert_equal 43, first.size # 256 bits
    get "/search"
    post "/logout", { "token" => token }
    attempt("ann", "annann")
    refute_equal first, rack_mock_session.cookie_jar["vistaro"]
    set_cookie "vistaro=#{first}"
    get "/search"
    assert_equal 303, status, "a session that was logged out is replayed"
  end

  def test_a_cookie_that_a_visitor_brings_is_no_session
    set_cookie "vistaro=#{'A' * 43}"
    get "/search"
    assert_equal 303, status
  end

  def test_the_cookie_is_kept_from_scripts_and_other_sites
    attempt("ann", "annann")
    cookie = last_response["Set-Cookie"]
    assert_includes cookie, "HttpOnly"
    assert_includes cookie, "SameSite=Lax"
    get "https://localhost/login"
    assert_match(%r{\A__Host-vistaro=.*; path=/; secure; HttpOnly; SameSite=Lax\z}i,
last_response["Set-Cookie"])
  end

  def test_leads_to_no_other_site
    ["//evil.example/", "https://evil.example/", "/\\evil.example", "javascript:alert(1)",
     "/a\r\nX: y"].each do |target|
      clear_cookies
      get "/login"
      post "/login", { "token" => token, "name" => "ann", "password" => "annann", "to" => target }
      assert_equal "/", last_response["Location"], target
    end
  end

  def test_a_name_cannot_forge_lines_of_the_log
    attempt("x\n{\"event\":\"login_accepted\"}\u0085\u2028\e[2J\x7f", "wrong")
    lines = @log.string.lines
    assert_equal 1, lines.grep(/login_refused/).size
    refute_match(/[\x00-\x09\x0b-\x1f\x7f]|[^\x00-\x7f]/n, @log.string.b)
    assert_empty events("login_accepted")
  end

  def test_the_log_holds_no_password
    attempt("ann", "Geheim-1234")
    refute_includes @log.string, "Geheim"
  end
end
