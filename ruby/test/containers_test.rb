# frozen_string_literal: true

require_relative "test_helper"

# Live dictionaries and arrays.
class ContainersTest < WorldTest
  def storage
    ann.userStorage
  end

  def test_what_is_put_into_a_storage_is_in_the_file
    settings.storageForUser(ann)["x"] = { "list" => [1] }
    settings.storageForUser(ann)["x"]["list"] << 2
    assert settings.saveStorage
    settings.reloadConfig
    assert_equal({ "list" => [1, 2] }, settings.storageForUser(ann)["x"])
  end

  def test_a_dictionary_behaves_like_a_hash
    storage["b"] = 1
    storage[:a] = 2
    assert_equal 2, storage.size
    assert_equal %w[b a], storage.keys
    assert_equal [1, 2], storage.values
    assert storage.key?("a")
    assert storage.include?(:a)
    refute storage.key?("c")
    assert_nil storage["c"]
    assert_equal({ "b" => 1, "a" => 2 }, storage.to_h)
    assert_equal [["b", 1], ["a", 2]], storage.each.to_a
    assert_equal({ 1 => "b", 2 => "a" }, storage.to_h { |key, value| [value, key] })
    assert_equal([["a", 2]], storage.select { |_, value| value > 1 })
    assert_equal 1, storage.fetch("b")
    assert_equal 7, storage.fetch("c", 7)
    assert_raises(KeyError) { storage.fetch("c") }
    assert_equal 1, storage.delete("b")
    assert_nil storage.delete("b")
    refute_empty storage
    assert_empty storage.clear
  end

  def test_a_dictionary_may_change_while_it_is_walked
    storage.update("a" => 1, "b" => 2)
    storage.each { |key, _| storage.delete(key) }
    assert_empty storage
  end

  def test_dictionaries_are_compared_by_what_they_hold
    storage["x"] = { "a" => [1, 2.0] }
    assert_equal storage["x"], { "a" => [1.0, 2] }
    assert_equal({ "a" => [1, 2] }, storage["x"])
    refute_equal storage["x"], { "a" => [1] }
    refute_equal storage["x"], 1
  end

  def test_an_array_behaves_like_an_array
    storage["x"] = [1, 2, 3]
    array = storage["x"]
    assert_equal 3, array.size
    assert_equal [1, 3, nil, nil], [array[0], array[-1], array[3], array[-4]]
    assert_equal [2, 3], array[1..]
    assert_equal [1, 2], array[0, 2]
    assert_equal [2, 4, 6], (array.map { |value| value * 2 })
    array[1] = "two"
    array << { "a" => 1 }
    assert_equal [1, "two", 3, { "a" => 1 }], array.to_a
    assert_equal 1, array.delete_at(0)
    assert_equal "two", array.delete("two")
    assert_raises(IndexError) { array[9] = 1 }
    assert_equal 1, array.dig(1, "a")
    first, second = array
    assert_equal 3, first
    assert_equal 1, second["a"]
  end

  def test_a_container_cannot_be_put_into_itself
    storage["x"] = { "y" => [] }
    assert_raises(ArgumentError) { storage["x"]["y"] << storage }
    assert_raises(ArgumentError) { storage["x"]["self"] = storage["x"] }
    assert_equal({ "x" => { "y" => [] } }, storage)
  end

  def test_what_is_nested_without_end_can_go
    skip "takes minutes" if ENV["GC_STRESS"]
    inner = storage
    200_000.times { inner = (inner["x"] = {}).then { inner["x"] } }
    inner = nil
    GC.start
    settings.reloadConfig
    assert_empty storage
  end

  def test_what_is_deleted_stays_usable
    storage["x"] = { "a" => [1] }
    inner = storage["x"]["a"]
    removed = storage.delete("x")
    removed["b"] = 2
    inner << 3
    assert_equal({ "a" => [1, 3], "b" => 2 }, removed)
  end

  def test_an_array_of_objects_is_enumerable
    settings.setSearchFolders([folder("A"), folder("B")])
    folders = settings.searchFolders
    assert_equal 2, folders.size
    assert_equal %w[A B], folders.map(&:title)
    assert_equal "B", folders[-1].title
    assert_nil folders[2]
    assert_equal 2, folders.to_a.size
    assert_equal ["A"], folders[0, 1].map(&:title)
    assert_same folders, settings.searchFolders
  end

  def test_records_are_only_read
    write("a.txt")
    record = search('kMDItemFSName == "a.txt"').results[0].results[0]
    assert_equal "a.txt", record["kMDItemDisplayName"]
    assert_raises(FrozenError) { record["x"] = 1 }
    assert_raises(FrozenError) { record["kMDItemContentTypeTree"] << "public.other" }
    assert_raises(FrozenError) { record.delete("kMDItemPath") }
  end
end
