# frozen_string_literal: true

require "minitest/autorun"
require "fileutils"
require "tmpdir"
require_relative "../app/administration/folder_tree"

# The tree of search folders, as administrators change it.
class FolderTreeTest < Minitest::Test
  FolderTree = VistaroWeb::Administration::FolderTree

  def setup
    @folder = File.realpath(Dir.mktmpdir("vistaro-"))
    %w[a b c].each { |name| Dir.mkdir(File.join(@folder, name)) }
    @tree = FolderTree.new([])
    @tree.add_folder("A", path("a"), "", download: true)
    @tree.add_group("G", "")
    @tree.add_folder("B", path("b"), "G", download: false)
  end

  def teardown
    FileUtils.rm_rf(@folder)
  end

  def test_holds_folders_and_groups
    assert_equal ["A", "G", ["B"]], shape
    assert_equal({ "title" => "A", "download" => 1, "path" => path("a"), "userDefinedURLPaths" => false },
                 @tree.find("A"))
    assert_equal ["G"], @tree.groups
    assert_equal(["", "", "G"], %w[A G B].map { |title| @tree.group_of(title) })
  end

  def test_names_a_folder_after_itself_and_stores_its_path_without_links
    File.symlink(path("c"), path("link"))
    @tree.add_folder(" ", path("link"), "", download: false)
    assert_equal path("c"), @tree.find("c")["path"]
  end

  def test_refuses_what_cannot_be
    File.write(path("file"), "")
    { "not_absolute" => "a", "no_folder" => path("file") }.each do |reason, path|
      assert_refused(reason) { @tree.add_folder("N", path, "", download: false) }
    end
    assert_refused("no_folder") { @tree.add_folder("N", path("missing"), "", download: false) }
    assert_refused("not_absolute") { @tree.add_folder("N", "/\0", "", download: false) }
    assert_refused("title_taken") { @tree.add_folder("B", path("c"), "", download: false) }
    assert_refused("title_taken") { @tree.add_group("A", "G") }
    assert_refused("no_title") { @tree.rename("A", " ") }
    assert_refused("odd_title") { @tree.rename("A", "a\nb") }
    assert_refused("missing") { @tree.add_group("N", "A") }
    assert_refused("missing") { @tree.remove("N") }
    assert_equal ["A", "G", ["B"]], shape
  end

  def test_takes_no_folder_outside_of_where_it_may
    tree = FolderTree.new([], only_below: path("a"))
    Dir.mkdir(path("a/inner"))
    Dir.mkdir(path("a2"))
    File.symlink(path("b"), path("a/link"))
    tree.add_folder("Inner", path("a/inner"), "", download: true)
    ["/", "/etc", path("b"), path("a2"), path("a/../b"), path("a/link")].each do |path|
      assert_refused("outside") { tree.add_folder("N", path, "", download: true) }
      assert_refused("outside") { tree.put_at("Inner", path) }
    end
  end

  def test_moves_folders_between_groups_and_among_neighbours
    @tree.move_to("B", "")
    assert_equal ["A", "G", [], "B"], shape
    @tree.shift("B", -1)
    assert_equal ["A", "B", "G", []], shape
    @tree.shift("A", -1)
    @tree.shift("G", 1)
    assert_equal ["A", "B", "G", []], shape
    @tree.move_to("A", "G")
    assert_equal ["B", "G", ["A"]], shape
  end

  def test_puts_no_group_into_itself
    @tree.add_group("H", "G")
    assert_refused("inside_itself") { @tree.move_to("G", "H") }
    assert_refused("inside_itself") { @tree.move_to("G", "G") }
  end

  def test_dissolves_a_group_in_its_place_and_removes_one_with_its_folders
    @tree.add_folder("C", path("c"), "", download: false)
    @tree.dissolve("G")
    assert_equal %w[A B C], shape
    @tree.add_group("G", "")
    @tree.move_to("B", "G")
    @tree.remove("G")
    assert_equal %w[A C], shape
  end

  def test_allows_downloads_from_a_whole_group
    @tree.allow_download("G", true)
    assert_equal 1, @tree.find("B")["download"]
    refute @tree.find("G").key?("download")
  end

  def test_keeps_addresses_of_ones_own
    @tree.use_addresses("A", "afpURLPath" => "", "smbURLPath" => "smb://host/a")
    assert_equal [true, nil, "smb://host/a"],
                 @tree.find("A").values_at("userDefinedURLPaths", "afpURLPath", "smbURLPath")
    ["http://host", "smb://a b", "javascript:alert(1)"].each do |address|
      assert_refused("wrong_address") { @tree.use_addresses("A", "smbURLPath" => address) }
    end
    @tree.use_addresses("A", "afpURLPath" => "", "smbURLPath" => "")
    assert_equal [false, nil], @tree.find("A").values_at("userDefinedURLPaths", "smbURLPath")
  end

  private

  def path(name)
    File.join(@folder, name)
  end

  def shape(entries = @tree.entries)
    entries.flat_map do |entry|
      entry["children"] ? [entry["title"], shape(entry["children"])] : [entry["title"]]
    end
  end

  def assert_refused(reason, &)
    assert_equal reason, assert_raises(FolderTree::Refused, &).reason
  end
end
