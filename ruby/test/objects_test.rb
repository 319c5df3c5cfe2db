# frozen_string_literal: true

require_relative "test_helper"

# Objects of the library as Ruby objects.
class ObjectsTest < WorldTest
  def test_the_same_object_is_the_same_in_ruby
    settings.setSearchFolders([folder])
    assert_same settings.searchFolders[0], settings.searchFolderForTitle("Tree")
    assert_same settings.globalSettings, settings.globalSettings
    assert_same VTSearchKind.defaultKind, VTSearchKind.kindForContentTypes([])
  end

  def test_what_an_initialiser_fills_is_what_is_found_again
    mine = folder
    settings.setSearchFolders([mine])
    assert_same mine, settings.searchFolders[0]
  end

  def test_an_object_is_of_its_own_class
    group = VTSearchFolderGroup.alloc.initWithTitle("G")
    group.addFolder(folder)
    settings.searchFolders = [group]
    settings.saveStorage
    settings.reloadConfig
    assert_instance_of VTSearchFolderGroup, settings.searchFolders[0]
    assert_kind_of VTSearchFolder, settings.searchFolders[0]
    assert_instance_of VTConcreteSearchFolder, settings.searchFolders[0].folders[0]
  end

  def test_objects_outlive_what_they_came_from
    write("a.txt")
    record = search('kMDItemFSName == "a.txt"').results[0].results[0]
    tree = record["kMDItemContentTypeTree"]
    5.times { GC.start }
    assert_equal "a.txt", record["kMDItemDisplayName"]
    assert_includes tree, "public.plain-text"
  end

  def test_a_storage_outlives_the_settings_that_held_it
    storage = ann.userStorage
    settings.reloadConfig
    GC.start
    storage["x"] = 1
    assert_equal 1, storage["x"]
    assert_nil ann.userStorage["x"]
  end

  def test_an_initialiser_that_answers_nil_gives_nil
    assert_nil VTUser.alloc.initWithUsername("nobody here", fromDirectoryService: nil)
    assert_nil VTUser.userWithName("nobody here")
  end

  def test_an_object_that_is_not_initialised_says_so
    error = assert_raises(RuntimeError) { VTUser.alloc.uid }
    assert_match(/not initialised/, error.message)
    assert_raises(ArgumentError) { settings.storageForUser(VTUser.alloc) }
  end

  def test_an_object_is_initialised_once
    assert_raises(ArgumentError) { folder.initWithTitle("again") }
  end

  def test_an_initialiser_of_another_class_is_refused
    initialiser = VTSearchFolder.instance_method(:initWithTitle)
    assert_raises(ArgumentError) { initialiser.bind_call(VTSearchFolderGroup.alloc, "x") }
  end

  def test_there_is_no_new_and_no_copy
    assert_raises(NoMethodError) { VTUser.new }
    assert_raises(NoMethodError) { ann.dup }
    assert_raises(TypeError) { ann.userStorage.clone }
    assert_raises(TypeError) { VTDictionary.allocate }
  end

  def test_classes_can_be_derived_from
    derived = Class.new(VTConcreteSearchFolder) { def shout = title.upcase }
    mine = derived.alloc.initWithPath("/x", title: "a")
    assert_equal "A", mine.shout
    settings.searchFolders = [mine]
    assert_same mine, settings.searchFolders[0]
  end

  def test_nothing_can_be_done_with_the_methods_of_another_class
    assert_raises(TypeError) { VTUser.instance_method(:uid).bind(settings) }
  end

  def test_a_group_cannot_hold_itself
    outer = VTSearchFolderGroup.alloc.initWithTitle("O")
    inner = VTSearchFolderGroup.alloc.initWithTitle("I")
    outer.addFolder(inner)
    assert_raises(ArgumentError) { inner.addFolder(outer) }
    assert_raises(ArgumentError) { outer.addFolder(outer) }
    assert_raises(ArgumentError) { outer.addFolder(nil) }
    assert_equal [], outer.paths
  end

  def test_init_of_the_settings_gives_the_one_instance
    assert_same settings, VTSettings.alloc.init
  end
end
