# frozen_string_literal: true

require_relative "test_helper"

# Values on their way through the library.
class ValuesTest < WorldTest
  def storage
    settings.globalSettings
  end

  def through(value)
    storage["x"] = value
    storage["x"]
  end

  def test_scalars_come_back_as_they_went
    [nil, true, false, 0, -1, 2**62, -(2**63), 2**63, (2**64) - 1, 1.5, -0.25, "", "Grüße"].each do |value|
      back = through(value)
      value.nil? ? assert_nil(back) : assert_equal(value, back)
      assert_equal value.class, back.class
    end
  end

  def test_integers_of_more_than_64_bits_are_refused
    [2**64, -(2**63) - 1, 10**40].each { |value| assert_raises(ArgumentError) { through(value) } }
  end

  def test_text_is_utf8
    assert_equal Encoding::UTF_8, through("Grüße").encoding
    assert_equal "Grüße", through("Grüße".encode("ISO-8859-1"))
    assert_equal "Grüße", through("Grüße".encode("UTF-16LE"))
  end

  def test_bytes_are_a_binary_string
    bytes = "\x00\xFF\x80a".b
    assert_equal bytes, through(bytes)
    assert_equal Encoding::BINARY, through(bytes).encoding
  end

  def test_broken_text_keeps_its_bytes
    assert_equal "a\xFFb".b, through("a\xFFb").b
  end

  def test_text_may_hold_a_nul
    assert_equal "a\0b", through("a\0b")
  end

  def test_times_keep_microseconds
    [Time.at(0), Time.at(1_800_000_000, 123_456), Time.utc(1969, 12, 31, 23, 59, 59, 500_000),
     Time.utc(9999, 12, 31)].each do |time|
      assert_equal time, through(time)
    end
  end

  def test_times_out_of_range_are_refused
    assert_raises(ArgumentError, RangeError) { through(Time.at(10**17)) }
  end

  def test_symbols_are_text
    assert_equal "name", through(:name)
  end

  def test_hashes_and_arrays_are_taken_whole
    value = { "a" => [1, { "b" => nil }], "c" => {} }
    assert_equal value, through(value)
    assert_equal({ "a" => 1 }, through({ a: 1 }))
  end

  def test_what_no_property_list_holds_is_refused
    [Object.new, 1..2, 1r, Class, -> {}].each do |value|
      assert_raises(ArgumentError) { through(value) }
    end
  end

  def test_keys_that_are_no_text_are_refused
    assert_raises(ArgumentError) { through({ 1 => 2 }) }
  end

  def test_what_holds_itself_is_refused
    array = []
    array << array
    assert_raises(ArgumentError) { through(array) }
    hash = {}
    hash["self"] = [hash]
    assert_raises(ArgumentError) { through(hash) }
  end

  def test_as_deep_as_a_property_list_may_be
    skip "takes half a minute" if ENV["GC_STRESS"]
    deep = (1..500).reduce([]) { |inner, _| [inner] }
    assert_equal deep, through(deep).to_a
    too_deep = (1..600).reduce([]) { |inner, _| [inner] }
    assert_raises(ArgumentError) { through(too_deep) }
  end

  def test_a_refused_value_changes_nothing
    through(1)
    assert_raises(ArgumentError) { through([1, Object.new]) }
    assert_equal 1, storage["x"]
  end

  def test_arguments_of_the_wrong_kind_are_refused
    assert_raises(ArgumentError) { settings.searchFolderForTitle(nil) }
    assert_raises(ArgumentError) { settings.searchFolderForTitle(1) }
    assert_raises(ArgumentError) { settings.setSearchCount(-1) }
    assert_raises(ArgumentError) { settings.setSearchCount("1") }
    assert_raises(ArgumentError) { settings.storageForUser(settings) }
    assert_raises(ArgumentError) { settings.storageForUser(nil) }
    assert_raises(ArgumentError) { settings.setSearchFolders([nil]) }
    assert_raises(ArgumentError) { settings.setStorage(nil, forUser: ann) }
    assert_raises(ArgumentError) { ann.setDefaultAction(2**31) }
    assert_raises(ArgumentError) { settings.serverName("x") }
  end

  def test_booleans_are_taken_from_numbers_too
    [[true, true], [false, false], [nil, false], [0, false], [1, true]].each do |given, expected|
      settings.saveSettingsOnChanges = given
      assert_equal expected, settings.saveSettingsOnChanges
    end
    assert_raises(ArgumentError) { settings.saveSettingsOnChanges = "yes" }
  end

  def test_orderings_are_minus_one_zero_and_one
    a = VTSearchKind.alloc.initWithTitle("a", types: [])
    b = VTSearchKind.alloc.initWithTitle("B", types: nil)
    assert_equal([-1, 1, 0], [a.titleCompare(b), b.titleCompare(a), a.titleCompare(a)])
  end

  def test_sets_of_key_paths_are_arrays
    assert_equal ["path"], VTConcreteSearchFolder.keyPathsForValuesAffectingAfpURLPath
    assert_instance_of Array, VTConcreteSearchFolder.keyPathsForValuesAffectingSmbURLPath
  end

  def test_a_hash_that_is_changed_is_changed
    hash = { "other" => 1 }
    VTSavedSearch.alloc.initWithQuery("q", title: "t").addToStorage(hash)
    assert_equal 1, hash["other"]
    assert_equal([{ "query" => "q", "title" => "t", "searchFolderTitle" => "" }], hash["SavedSearches"])
  end
end
