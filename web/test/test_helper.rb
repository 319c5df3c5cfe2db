# frozen_string_literal: true

require_relative "../../ruby/test/test_helper"
require "rack/test"
require "stringio"
require_relative "../app/boot"

# The application in a world of its own, with `ann` and the administrator `ben`, whose passwords are
# their names twice, and `nobody`.
class WebTest < WorldTest
  include Rack::Test::Methods

  PASSWD = "#{WorldTest::PASSWD}nobody:x:65534:65534:nobody:/nonexistent:/bin/false\n".freeze
  # Of a hash that is quick to check: passwords of tests guard nothing.
  SHADOW = %w[root ann ben].map do |name|
    "#{name}:#{(name * 2).crypt('$6$rounds=1000$saltsalt$')}:19000:0:99999:7:::\n"
  end.join.freeze

  def setup
    super
    File.write(File.join(@root, "etc/passwd"), PASSWD)
    File.write(File.join(@root, "etc/shadow"), SHADOW, perm: 0o600)
    VistaroRuby.restart
    VistaroWeb::EventLog.output = @log = StringIO.new
    settings.loadAttributeNames
    settings.searchFolders = [folder]
    app.set(:store, VistaroWeb::Sessions.new)
    app.set(:login, VistaroWeb::Login.new(minimum_seconds: 0))
  end

  def app
    VistaroWeb::Application
  end

  # A folder of the tree that may be searched.
  def folder(title = "Tree", path = @tree)
    VTConcreteSearchFolder.alloc.initWithPath(path, title: title)
  end

  def write(name, text = "x", mode: 0o644)
    path = File.join(@tree.b, name.b)
    FileUtils.mkdir_p(File.dirname(path))
    File.binwrite(path, text)
    File.chmod(mode, path)
    path
  end

  # Under a name that is ours: what rack-test would ask for is not.
  def build_rack_test_session(_name)
    Rack::Test::Session.new(app, "localhost")
  end

  def log_in(name = "ann", password = name * 2)
    get "/login"
    post "/login", { "token" => token, "name" => name, "password" => password }
  end

  # The token of the form on the last page.
  def token
    last_response.body[/name="token" value="([0-9a-f]+)"/, 1]
  end

  def status
    last_response.status
  end

  def body
    last_response.body.dup.force_encoding(Encoding::UTF_8)
  end

  # The events logged so far, by name.
  def events(name)
    @log.string.lines.map { |line| JSON.parse(line) }.select { |event| event["event"] == name }
  end
end
