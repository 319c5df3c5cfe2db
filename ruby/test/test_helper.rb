# frozen_string_literal: true

require "minitest/autorun"
require "fileutils"
require "tmpdir"
require "VistaroRuby"

# A test in a world of its own: settings, accounts and a tree of files in temporary folders, with
# `ann` (2001) and the administrator `ben` (2002).
class WorldTest < Minitest::Test
  include VistaroRuby

  FOLDERS = ["etc", "tmp", "Library/Application Support", "Library/Caches", "var/lib/vistaro"].freeze
  PASSWD = <<~TEXT
    root:x:0:0:System:/root:/bin/sh
    ann:x:2001:2001:Ann Other:/home/ann:/bin/sh
    ben:x:2002:2002:Ben Third:/home/ben:/bin/sh
  TEXT
  GROUP = "root:x:0:\nadmin:x:80:ben\nann:x:2001:\nben:x:2002:\n"

  def setup
    @folder = Dir.mktmpdir("vistaro-")
    File.chmod(0o755, @folder)
    @root = File.join(@folder, "root")
    @tree = File.join(@folder, "tree")
    FileUtils.mkdir_p([@tree, *FOLDERS.map { |name| File.join(@root, name) }])
    File.write(File.join(@root, "etc/passwd"), PASSWD)
    File.write(File.join(@root, "etc/group"), GROUP)
    ENV["VISTARO_ROOT"] = @root
    VistaroRuby.restart
  end

  def teardown
    FileUtils.rm_rf(@folder)
  end

  # With GC_STRESS set, the collector runs at every chance that a test gives it.
  def after_setup
    super
    GC.stress = true if ENV["GC_STRESS"]
  end

  def before_teardown
    GC.stress = false
    super
  end

  def settings
    VTSettings.sharedInstance
  end

  def ann
    VTUser.userWithName("ann")
  end

  # A folder of the tree that may be searched.
  def folder(title = "Tree")
    VTConcreteSearchFolder.alloc.initWithPath(@tree, title: title)
  end

  def write(name, text = "x")
    path = File.join(@tree, name)
    File.write(path, text)
    path
  end

  # The container that a search of the tree finds.
  def search(query, user: nil)
    VTSearchManager.alloc.initWithUser(user).executeQuery(query, forSearchFolders: [folder])
  end
end
