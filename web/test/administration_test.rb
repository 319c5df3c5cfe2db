# frozen_string_literal: true

require_relative "test_helper"
require_relative "support/smtp_sink"

# The administration, for administrators alone.
class AdministrationTest < WebTest
  PAGES = %w[/admin /admin/server /admin/mail /admin/folders /admin/folders/edit?of=Tree].freeze
  CHANGES = %w[/admin/server /admin/mail /admin/mail/test /admin/folders /admin/folders/change
               /admin/folders/edit].freeze

  def setup
    super
    log_in("ben")
  end

  def test_is_for_administrators_alone
    PAGES.each do |address|
      get address
      assert_equal 200, status, address
    end
    clear_cookies
    PAGES.each do |address|
      get address
      assert_equal 303, status, address
    end
    log_in("ann")
    refute_includes body, "/admin"
    before = File.exist?(VTSettings.settingsStoragePath) && File.read(VTSettings.settingsStoragePath)
    get "/preferences"
    given = token
    PAGES.each do |address|
      get address
      assert_equal 403, status, address
    end
    CHANGES.each do |address|
      post address, { "token" => given, "serverName" => "evil", "title" => "Evil", "path" => "/etc",
                      "of" => "Tree", "change" => "remove" }
      assert_equal 403, status, address
    end
    assert_equal before,
File.exist?(VTSettings.settingsStoragePath) && File.read(VTSettings.settingsStoragePath)
  end

  def test_is_closed_however_its_address_is_written
    clear_cookies
    log_in("ann")
    %w[/%61dmin /admi%6e/server /adm%69n/mail /%61%64%6d%69%6e/folders /admin/%66olders
       /%61dmin/folders/edit?of=Tree /admin/ /./admin /x/../admin].each do |address|
      get address
      assert_includes [403, 404], status, address
    end
    get "/preferences"
    given = token
    %w[/%61dmin/folders /%61dmin/folders/change /adm%69n/server].each do |address|
      post address, { "token" => given, "title" => "Evil", "what" => "group", "of" => "Tree",
                      "change" => "remove", "serverName" => "evil" }
      assert_equal 403, status, address
    end
    assert_equal ["Tree"], settings.searchFolders.map(&:title)
  end

  def test_takes_no_form_but_its_own
    CHANGES.each do |address|
      post address, { "title" => "Evil", "path" => "/etc", "of" => "Tree", "change" => "remove" }
      assert_equal 403, status, address
    end
    assert_equal ["Tree"], settings.searchFolders.map(&:title)
  end

  def test_lists_of_names_and_addresses_are_typed_one_to_a_line
    get "/admin/server"
    form = { "token" => token, "serverPort" => "9000" }
    post "/admin/server", form.merge("webHostNames" => "files.example.org\r\nfiles, files",
                                     "webProxyAddresses" => "FD00:0::1\n10.0.0.1")
    assert_equal 303, status
    assert_equal %w[files.example.org files], settings.valueForKey("webHostNames").to_a
    assert_equal %w[fd00::1 10.0.0.1], settings.valueForKey("webProxyAddresses").to_a
    get "/admin/server", {}, "HTTP_HOST" => "files.example.org"
    assert_equal 200, status
    assert_includes body, "files.example.org\nfiles</textarea>"
    %w[webHostNames=a_b webProxyAddresses=10.0.0.0/8 webProxyAddresses=proxy].each do |wrong|
      post "/admin/server", form.merge([wrong.split("=")].to_h)
      assert_equal 422, status, wrong
    end
    post "/admin/server", form
    assert_nil settings.valueForKey("webHostNames")
    get "/admin/server", {}, "HTTP_HOST" => "files.example.org"
    assert_equal 421, status
  end

  def test_shows_how_the_server_does
    VTUser.userWithName("ann").login
    get "/search", "q" => "x"
    get "/admin"
    assert_includes body, settings.serverURL
    assert_match(%r{<dt>Searches since then</dt><dd>#{settings.totalSearches}</dd>}, body)
    assert_match(%r{<dt>Users logged in</dt><dd>2</dd>}, body)
    assert_includes body, "There is no index yet"
    VistaroWeb::Command.run("index", "--once")
    get "/admin"
    assert_includes body, "The index is fresh."
  end

  def test_changes_the_server
    send_form "/admin/server", "serverName" => "files.example.org", "serverPort" => "9100",
                               "sslEnabled" => "1", "useSSLTestCertificate" => "1"
    assert_equal "/admin/server?done=saved", last_response["Location"]
    follow_redirect!
    assert_includes body, "take effect when the server is started again"
    settings.reloadConfig
    assert_equal ["files.example.org", 9100, true, true],
                 [settings.serverName, settings.serverPort, settings.sslEnabled,
                  settings.useSSLTestCertificate]
    refute settings.userAuthenticationDisabled
  end

  def test_asks_for_no_restart_when_nothing_changed
    get "/admin/server"
    fields = { "serverName" => settings.serverName, "serverPort" => settings.serverPort.to_s }
    send_form "/admin/server", fields
    follow_redirect!
    refute_includes body, "take effect when"
  end

  def test_refuses_what_a_server_cannot_be
    [{ "serverPort" => "0" }, { "serverPort" => "65536" }, { "serverPort" => "x" }, { "serverName" => "a b" },
     { "serverName" => "a/b" }, { "sslEnabled" => "1" }, { "sslEnabled" => "yes" },
     { "sslEnabled" => "1", "sslCertificatePath" => "/missing" },
     { "sslCertificatePath" => "relative" }].each do |fields|
      send_form "/admin/server", { "serverPort" => "9000" }.merge(fields)
      assert_equal 422, status, fields
      assert_includes body, 'role="alert"'
    end
    assert_equal 9000, settings.serverPort
    refute settings.sslEnabled
  end

  def test_keeps_the_password_of_the_mail_host_and_never_shows_it
    fields = { "smtpUseSSL" => "1", "smtpServerAuthenticationMode" => "1", "smtpDefaultServerPort" => "1" }
    send_form "/admin/mail", fields.merge("smtpServerUsername" => "sender", "smtpServerPassword" => "geheim")
    follow_redirect!
    refute_includes body, "geheim"
    assert_includes body, "A password is stored."
    send_form "/admin/mail", fields.merge("smtpServerUsername" => "other")
    assert_equal %w[other geheim], [settings.smtpServerUsername, settings.smtpServerPassword]
    send_form "/admin/mail", fields.merge("forget" => "1")
    assert_nil settings.smtpServerPassword
    assert_nil settings.smtpServerUsername
    refute_includes @log.string, "geheim"
  end

  def test_refuses_mail_that_cannot_work
    good = { "mailEnabled" => "1", "smtpFromEmailAddress" => "a@example.org",
             "smtpServerAddress" => "localhost", "smtpDefaultServerPort" => "1" }
    [{ "smtpServerAddress" => "" }, { "smtpServerAddress" => "a b" }, { "smtpFromEmailAddress" => "" },
     { "smtpFromEmailAddress" => "a@b\r\nBcc: c@d.e" }, { "smtpDefaultServerPort" => "" },
     { "smtpCustomServerPort" => "70000" }, { "smtpServerUsername" => "x" }].each do |fields|
      send_form "/admin/mail", good.merge(fields)
      assert_equal 422, status, fields
    end
    refute settings.mailEnabled
    send_form "/admin/mail", good
    assert settings.mailingConfiguredAndEnabled
  end

  def test_sends_a_test_message
    sink = SMTPSink.new(:plain)
    send_form "/admin/mail/test", "to" => "ben@example.org"
    assert_equal 422, status
    send_form "/admin/mail", "mailEnabled" => "1", "smtpFromEmailAddress" => "a@example.org",
                             "smtpServerAddress" => "127.0.0.1", "smtpCustomServerPort" => sink.port.to_s
    send_form "/admin/mail/test", "to" => "ben@example.org"
    assert_equal 303, status
    message = sink.messages.pop
    assert_equal ["a@example.org", ["ben@example.org"]], [message.from, message.to]
    assert_includes message.data, "Subject: Test message of Vistaro"
  ensure
    sink.stop
  end

  def test_changes_the_tree_of_folders
    FileUtils.mkdir_p([File.join(@tree, "in"), File.join(@tree, "out")])
    send_form "/admin/folders", "what" => "group", "title" => "All"
    send_form "/admin/folders", "what" => "folder", "title" => "<b>In", "path" => File.join(@tree, "in"),
                                "group" => "All", "download" => "1"
    get "/admin/folders"
    assert_includes body, "&lt;b&gt;In"
    assert_equal [["Tree", nil], ["All", ["<b>In"]]], (settings.searchFolders.map do |place|
      [place.title, (place.folders.map(&:title) if place.is_a?(VTSearchFolderGroup))]
    end)
    change("<b>In", "refuse")
    assert_equal 0, settings.searchFolders[1].download
    change("All", "up")
    assert_equal %w[All Tree], settings.searchFolders.map(&:title)
    change("All", "dissolve")
    assert_equal ["<b>In", "Tree"], settings.searchFolders.map(&:title)
    change("Tree", "remove")
    settings.reloadConfig
    assert_equal ["<b>In"], settings.searchFolders.map(&:title)
  end

  def test_edits_a_folder
    other = File.join(@tree, "other")
    FileUtils.mkdir_p(other)
    send_form "/admin/folders/edit", "of" => "Tree", "title" => "New", "path" => other, "download" => "1",
                                     "addresses" => "own", "smb" => "smb://host/share", "group" => ""
    edited = settings.searchFolders.first
    assert_equal ["New", File.realpath(other), 1, true, "smb://host/share"],
                 [edited.title, edited.path, edited.download, edited.userDefinedURLPaths, edited.smbURLPath]
    get "/admin/folders"
    assert_includes body, "smb://host/share"
  end

  def test_refuses_folders_that_cannot_be
    ["", "relative", "/missing", "/etc/passwd"].each do |path|
      send_form "/admin/folders", "what" => "folder", "title" => "N", "path" => path
      assert_equal 422, status, path
    end
    send_form "/admin/folders", "what" => "folder", "title" => "Tree", "path" => @tree
    assert_equal 422, status
    change("Missing", "remove")
    assert_equal 422, status
    change("Tree", "explode")
    assert_equal 400, status
    assert_equal ["Tree"], settings.searchFolders.map(&:title)
  end

  def test_searches_nothing_beside_the_tree_of_a_demonstration
    ENV["VISTARO_WEB_TREE"] = @tree
    send_form "/admin/folders", "what" => "folder", "title" => "N", "path" => "/etc"
    assert_equal 422, status
    assert_includes body, "only the sample files"
    send_form "/admin/folders/edit", "of" => "Tree", "title" => "Tree", "path" => "/"
    assert_equal 422, status
    assert_equal [@tree], settings.searchFolders.map(&:path)
  ensure
    ENV.delete("VISTARO_WEB_TREE")
  end

  def test_tells_the_share_of_each_folder_and_its_links
    FileUtils.mkdir_p(File.join(@root, "etc/samba"))
    File.write(File.join(@root, "etc/samba/smb.conf"), "[Plans <b>]\npath = #{@tree}\n")
    settings.reloadConfig
    settings.searchFolders = [folder, folder("Alone", "/etc")]
    get "/admin/folders"
    assert_includes body, "Shared as “Plans &lt;b&gt;”"
    assert_match(%r{SMB <bdi>smb://}, body)
    refute_match(/AFP <bdi>/, body)
    assert_equal 1, body.scan("Not shared").size
  end

  def test_tells_a_folder_that_is_missing
    settings.searchFolders = [folder("Gone", "/missing")]
    get "/admin/folders"
    assert_includes body, "This folder is missing"
  end

  private

  def send_form(address, fields)
    get "/admin/folders"
    post address, { "token" => token }.merge(fields)
  end

  def change(title, name)
    send_form "/admin/folders/change", "of" => title, "change" => name
  end
end
