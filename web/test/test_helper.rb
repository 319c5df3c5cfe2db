# frozen_string_literal: true

require "minitest/autorun"
require "fileutils"
require "rack/test"
require "stringio"
require "tmpdir"
require_relative "../app/boot"

# The application in a world of its own: settings, accounts and a tree of files in temporary folders,
# with `ann` (62001) and the administrator `ben` (62002), whose passwords are their names twice.
class WebTest < Minitest::Test
  include Rack::Test::Methods
  include VistaroRuby

  FOLDERS = ["etc", "tmp", "Library/Application Support", "Library/Caches", "var/lib/vistaro"].freeze
  PASSWD = <<~TEXT
    root:x:0:0:System:/root:/bin/sh
    nobody:x:65534:65534:nobody:/nonexistent:/bin/false
    ann:x:62001:62001:Ann Other:/home/ann:/bin/sh
    ben:x:62002:62002:Ben Third:/home/ben:/bin/sh
  TEXT
  GROUP = "root:x:0:\nadmin:x:80:ben\nann:x:62001:\nben:x:62002:\nnogroup:x:65534:\n"
  # Of a hash that is quick to check: passwords of tests guard nothing.
  SHADOW = %w[root ann ben].map do |name|
    "#{name}:#{(name * 2).crypt('$6$rounds=1000$saltsalt$')}:19000:0:99999:7:::\n"
  end.join.freeze

  def setup
    @folder = Dir.mktmpdir("vistaro-")
    File.chmod(0o755, @folder)
    @root = File.join(@folder, "root")
    @tree = File.join(@folder, "tree")
    FileUtils.mkdir_p([@tree, *FOLDERS.map { |name| File.join(@root, name) }])
    File.write(File.join(@root, "etc/passwd"), PASSWD)
    File.write(File.join(@root, "etc/group"), GROUP)
    File.write(File.join(@root, "etc/shadow"), SHADOW, perm: 0o600)
    ENV["VISTARO_ROOT"] = @root
    VistaroRuby.restart
    VistaroWeb::EventLog.output = @log = StringIO.new
    settings.loadAttributeNames
    settings.searchFolders = [folder]
    VistaroWeb::Application.set(:store, VistaroWeb::Sessions.new)
    VistaroWeb::Application.set(:login, VistaroWeb::Login.new(minimum_seconds: 0))
  end

  def teardown
    FileUtils.rm_rf(@folder)
  end

  def app
    VistaroWeb::Application
  end

  def settings
    VTSettings.sharedInstance
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
