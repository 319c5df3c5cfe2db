# frozen_string_literal: true

require_relative "test_helper"

# Searches that have to walk the files, away from everybody else.
class WalkTest < WebTest
  # More to read than is walked inside of the library: the same file under many names.
  MANY = 25
  TEXT = "some words that nobody looks for, " * 20_000
  SLOW = 'kMDItemTextContent == "needle"'

  def setup
    super
    text = write("folder/0.txt", TEXT)
    1.upto(MANY) { |i| File.link(text, "#{@tree}/folder/#{i}.txt") }
    write("folder/last.txt", "needle")
    log_in
  end

  def test_finds_what_takes_longer_than_others_wait
    get "/search", { "q" => SLOW }
    assert_equal 200, status
    assert_includes body, "1 item"
    assert_includes body, "last.txt"
    id = body[%r{href="(/item/[\w-]+)}, 1]
    get id
    assert_equal 200, status
    assert_equal 1, settings.totalSearches
  end

  def test_knows_what_is_typed
    File.utime(Time.at(0), Time.new(2019, 4, 15), write("folder/old plan.txt"))
    asked = VistaroWeb::Search::Request.new({ "q" => "modified:2019-04 kind:text plan" })
    session = VistaroWeb::Session.new(VTUser.userWithName("ann"), 0)
    found = VistaroWeb::Search::Walks.new.results(asked, session) { false }
    assert_equal(["old plan.txt"], found.groups.flat_map(&:items).map(&:name))
  end

  def test_finds_nothing_that_the_user_may_not_read
    write("folder/secret.txt", "needle", mode: 0o600)
    get "/api/search", { "q" => SLOW }
    items = JSON.parse(body)["groups"].flat_map { |group| group["items"] }
    assert_equal(["last.txt"], items.map { |item| item["name"] })
  end

  def test_others_go_on_meanwhile
    walk = Thread.new { searched(SLOW) }
    wait_for_a_walk
    start = now
    VistaroWeb::Library.enter { settings.serverName }
    assert_operator now - start, :<, 0.1
    assert_equal 1, app.walks.running
    assert_equal 200, walk.value
  end

  def test_takes_so_long_and_no_longer
    with_walks(VistaroWeb::Search::Walks.new(seconds: 0)) do
      get "/search", { "q" => SLOW }
      assert_includes body, "That took too long"
      get "/api/search", { "q" => SLOW }
      assert_equal [503, "time"], [status, JSON.parse(body)["error"]]
      assert_equal 0, app.walks.running
    end
  end

  def test_ends_when_the_same_page_asks_for_something_else
    older = Thread.new { searched(SLOW, "page_id" => "1") }
    wait_for_a_walk
    assert_equal 200, searched(SLOW, "page_id" => "1")
    assert_equal 409, older.value
  end

  def test_goes_on_when_another_page_asks
    older = Thread.new { searched(SLOW, "page_id" => "1") }
    wait_for_a_walk
    assert_equal 200, searched(SLOW, "page_id" => "2")
    assert_equal 200, older.value
  end

  def test_ends_when_the_visitor_has_gone
    here, there = TCPServer.open("127.0.0.1", 0) do |server|
      client = TCPSocket.new("127.0.0.1", server.addr[1])
      [server.accept, client]
    end
    there.close
    assert_equal 409, searched(SLOW, {}, "puma.socket" => here)
  ensure
    here&.close
  end

  def test_a_user_has_few_places
    with_walks(VistaroWeb::Search::Walks.new(seconds_for_a_place: 60)) do
      assert_equal [200], Array.new(4) { Thread.new { searched(SLOW) } }.map(&:value).uniq
    end
    with_walks(VistaroWeb::Search::Walks.new(seconds_for_a_place: 0)) do
      started = Array.new(4) { Thread.new { searched(SLOW) } }.map(&:value).tally
      assert_operator started[200], :<=, VistaroWeb::Search::Walks::MOST_OF_ONE_USER
      assert_equal 4, started.values_at(200, 429).sum
    end
  end

  def test_a_server_that_stops_ends_them
    walk = Thread.new { searched(SLOW) }
    wait_for_a_walk
    app.walks.stop
    assert_equal 409, walk.value
  end

  private

  # The status of a search in a browser window of its own.
  def searched(query, more = {}, env = {})
    cookie = rack_mock_session.cookie_jar.to_hash.map { |name, value| "#{name}=#{value}" }.join
    Rack::MockRequest.new(app).get("/search?#{Rack::Utils.build_query({ q: query, **more })}",
                                   "HTTP_HOST" => "localhost", "HTTP_COOKIE" => cookie, **env).status
  end

  def wait_for_a_walk
    Thread.pass until app.walks.running.positive?
  end

  def with_walks(walks)
    usual = app.walks
    app.set(:walks, walks)
    yield
  ensure
    app.set(:walks, usual)
  end

  def now
    Process.clock_gettime(Process::CLOCK_MONOTONIC)
  end
end
