# frozen_string_literal: true

require_relative "test_helper"

# How long one stays logged in.
class SessionTest < WebTest
  def setup
    super
    @now = 1_000.0
    app.set(:store, VistaroWeb::Sessions.new(clock: -> { @now }))
  end

  def logged_in?
    get "/search"
    status == 200
  end

  def test_ends_when_idle
    log_in
    @now += VistaroWeb::Sessions::IDLE_SECONDS - 1
    assert logged_in?
    @now += VistaroWeb::Sessions::IDLE_SECONDS + 1
    refute logged_in?
    assert_equal 0, settings.currentParallelUsers
  end

  def test_ends_after_half_a_day_however_busy
    log_in
    hours = 0
    while logged_in?
      @now += 20 * 60
      hours += 1.0 / 3
    end
    assert_in_delta 12, hours, 0.5
  end

  def test_ends_when_the_account_is_gone
    log_in
    File.write(File.join(@root, "etc/passwd"), PASSWD.lines.grep_v(/^ann:/).join)
    @now += VistaroWeb::Session::RECHECK_SECONDS
    refute logged_in?
  end

  def test_ends_when_the_account_is_locked
    log_in
    File.write(File.join(@root, "etc/shadow"), SHADOW.sub("ann:", "ann:!"))
    @now += VistaroWeb::Session::RECHECK_SECONDS
    refute logged_in?
  end

  def test_ends_when_the_days_of_the_account_are_over
    log_in
    File.write(File.join(@root, "etc/shadow"), SHADOW.gsub(":7:::", ":7::19500:"))
    @now += VistaroWeb::Session::RECHECK_SECONDS
    refute logged_in?
  end

  def test_ends_when_the_account_is_somebody_elses
    log_in
    File.write(File.join(@root, "etc/passwd"), PASSWD.sub("ann:x:2001", "ann:x:2009"))
    @now += VistaroWeb::Session::RECHECK_SECONDS
    refute logged_in?
  end

  def test_knows_who_is_no_administrator_any_more
    log_in("ben")
    session = app.store.instance_variable_get(:@sessions).values.first
    assert session.administrator?
    File.write(File.join(@root, "etc/group"), GROUP.sub("admin:x:80:ben", "admin:x:80:"))
    @now += VistaroWeb::Session::RECHECK_SECONDS
    assert logged_in?
    refute session.administrator?
  end

  def test_counts_who_is_logged_in
    log_in
    assert_equal 1, settings.currentParallelUsers
    get "/search"
    post "/logout", { "token" => token }
    assert_equal 0, settings.currentParallelUsers
  end

  def test_there_are_no_more_than_so_many
    store = VistaroWeb::Sessions.new(clock: -> { @now })
    first, = store.begin_for(VTUser.userWithName("ann"))
    VistaroWeb::Sessions::MOST.times { store.begin_for(VTUser.userWithName("ann")) }
    assert_nil store.find(first)
    assert_equal VistaroWeb::Sessions::MOST, store.count
  end

  def test_nobody_has_to_log_in_where_the_settings_say_so
    write("plan.txt")
    write("closed.txt", mode: 0o600)
    settings.userAuthenticationDisabled = true
    get "/search", { "q" => "txt" }
    assert_includes body, "plan.txt"
    refute_includes body, "closed.txt" if Process.euid.zero?
    assert_equal "nobody", app.store.instance_variable_get(:@sessions).values.first.username
    settings.userAuthenticationDisabled = false
    refute logged_in?, "the session that nobody logged in to goes on"
  end

  def test_nobody_searches_as_root
    settings.userAuthenticationDisabled = true
    settings.setValue("root", forKey: "anonymousUserName")
    refute logged_in?
  end

  def test_who_did_not_log_in_administers_nothing
    settings.userAuthenticationDisabled = true
    settings.setValue("ben", forKey: "anonymousUserName")
    assert logged_in?
    refute app.store.instance_variable_get(:@sessions).values.first.administrator?
  end
end
