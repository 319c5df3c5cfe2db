# frozen_string_literal: true

require_relative "test_helper"

# Errors of the library as Ruby's.
class ErrorsTest < WorldTest
  def test_an_unknown_key_is_a_key_error
    error = assert_raises(VistaroRuby::UndefinedKeyError) { folder.valueForKey("nope") }
    assert_kind_of KeyError, error
    assert_match(/nope/, error.message)
    assert_equal "nope", error.key
    assert_raises(VistaroRuby::UndefinedKeyError) { folder.setValue(1, forKey: "nope") }
    assert_raises(VistaroRuby::UndefinedKeyError) { ann.setValue_forKey(1, "uid") }
    assert_raises(VistaroRuby::UndefinedKeyError) do
      VTSearchFolder.deserializeFolderWithData({ "nope" => 1 })
    end
  end

  def test_settings_take_any_key
    settings.setValue("x", forKey: "mine")
    assert_equal "x", settings.valueForKey("mine")
    settings.setValue_forUndefinedKey(2, "mine")
    assert_equal 2, settings.valueForUndefinedKey("mine")
    assert_nil settings.valueForKey("unset")
  end

  def test_an_index_out_of_range_is_an_index_error
    container = VTSearchResultContainer.alloc.initWithUser(nil, results: [])
    assert_raises(IndexError) { container.resultAtIndex(0) }
    assert_nil container.resultAtIndex(1)
    empty = VTSearchResult.alloc.initWithGroupKind_results_searchFolders_attributeKeys_user(
      nil, [], nil, [], nil
    )
    assert_raises(IndexError) { empty.valueForKey("kMDItemPath", atIndex: 0) }
  end

  def test_a_value_that_a_property_cannot_take_is_an_argument_error
    assert_raises(ArgumentError) { folder.setValue(nil, forKey: "download") }
    assert_raises(ArgumentError) { folder.setValue(1, forKey: "title") }
    assert_raises(ArgumentError) { ann.setResultsPerPage(nil) }
    assert_raises(ArgumentError) { Base64.dataWithBase64EncodedString(nil) }
  end

  def test_no_pages_of_nothing_each
    user = ann
    user.resultsPerPage = 0
    group = VTSearchResult.alloc.initWithGroupKind(nil, results: [{}], searchFolders: nil,
                                                        attributeKeys: [], user: user)
    assert_raises(ZeroDivisionError) { group.numberOfPages }
  end

  def test_memory_that_cannot_be_had_is_no_crash
    assert_raises(NoMemoryError, ArgumentError, RuntimeError) { SSCrypto.getKeyDataWithLength(2**63) }
  end

  def test_a_rejected_query_is_nil_and_says_why
    manager = VTSearchManager.alloc.initWithUser(nil)
    assert_nil manager.executeQuery("kMDItemFSName ==", forSearchFolders: [folder])
    assert_equal 16, manager.lastRejection["offset"]
    refute_nil manager.executeQuery('kMDItemFSName == "x"', forSearchFolders: [folder])
    assert_nil manager.lastRejection
  end

  def test_a_root_that_cannot_be_used_is_an_error_that_can_be_mended
    ENV["VISTARO_ROOT"] = "relative"
    assert_raises(RuntimeError) { VistaroRuby.restart }
    assert_raises(RuntimeError) { settings }
    ENV["VISTARO_ROOT"] = @root
    refute_nil settings
  end

  def test_tables_that_are_missing_are_an_error
    ENV["VISTARO_RESOURCES"] = @tree
    assert_raises(RuntimeError) { VistaroRuby.restart }
  ensure
    ENV.delete("VISTARO_RESOURCES")
  end
end
