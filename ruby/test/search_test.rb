# frozen_string_literal: true

require_relative "test_helper"

# Logging in, searching, and what one does with what was found.
class SearchTest < WorldTest
  def test_hits_are_grouped_by_kind
    write("a.txt")
    write("b.pdf")
    write("c.txt")
    container = search('kMDItemFSName == "*"')
    assert_equal container.count, container.results.size
    pdf = container.resultWithGroupName("PDF Documents")
    assert_equal([File.join(@tree, "b.pdf")], (0...pdf.count).map { |i| pdf.pathForItemAtIndex(i) })
    assert_same(pdf, container.results.find { |group| group.title == "PDF Documents" })
  end

  def test_only_what_the_user_may_read_is_found
    skip "only root can search on behalf of others" unless Process.euid.zero?
    write("open.txt")
    File.chmod(0o600, write("closed.txt"))
    user = ann
    names = search('kMDItemFSName == "*.txt"', user: user).results.flat_map do |group|
      group.results.map { |record| record["kMDItemDisplayName"] }
    end
    assert_equal ["open.txt"], names
    assert_equal 0, Process.euid
    refute user.accessAllowedToPath(File.join(@tree, "closed.txt"))
  end

  def test_services_of_an_item
    path = write("a.txt", "text")
    scope = folder
    scope.download = 1
    manager = VTSearchManager.alloc.initWithUser(nil)
    group = manager.executeQuery('kMDItemFSName == "a.txt"', forSearchFolders: [scope]).results[0]
    assert_equal "text/plain", group.mimeTypeForItemAtIndex(0)
    assert_equal "text/plain", NSFileManagerAdditions.mimeTypeAtPath(path)
    assert group.isDownloadableForItemAtIndex(0)
    refute group.isEmailableAtIndex(0)
    assert_nil group.webLinkForItemAtIndex(0)
    assert_equal "urlrunner://file//#{path}",
                 group.openURLPathForItemAtIndex(0, windowsClient: false, localClient: true)
    assert_nil group.smbURLPathForItemAtIndex(0, windowsClient: true)
    assert_equal 4, group.valueForKey_atIndex("kMDItemFSSize", 0)
    assert_kind_of Time, group.valueForKey("kMDItemContentModificationDate", atIndex: 0)
    settings.loadAttributeNames
    assert_includes group.metadataForItemAtIndex(0).values, "a.txt"
    group.sortByAttribute("kMDItemFSSize")
    assert_equal "kMDItemFSSize", group.sortAttribute
    assert_equal "a b", group.encodedURL("a%20b")
  end

  def test_paths_are_bytes
    name = "a\xFF.txt".b
    path = File.join(@tree.b, name)
    File.write(path, "x")
    group = search('kMDItemFSName == "*.txt"').results[0]
    assert_equal path, group.pathForItemAtIndex(0).b
    assert_equal "text/plain", NSFileManagerAdditions.mimeTypeAtPath(path)
  end

  def test_a_search_that_walks_too_long_is_given_up
    write("a.txt")
    manager = VTSearchManager.alloc.initWithUser(nil)
    manager.setLongestWalkSeconds(0)
    assert_nil manager.executeQuery("true", forSearchFolders: [folder])
    assert manager.lastNotes["walkWasGivenUp"]
    assert_nil manager.lastRejection
    manager.setLongestWalkSeconds(60)
    assert_equal 1, manager.executeQuery("true", forSearchFolders: [folder]).results.sum(&:count)
    refute manager.lastNotes["walkWasGivenUp"]
    [-1, Float::NAN, 1e300].each do |none|
      assert_raises(ArgumentError) { manager.setLongestWalkSeconds(none) }
    end
  end

  def test_users_and_their_preferences
    user = ann
    assert_equal [2001, 2001, "ann", "Ann Other", false],
                 [user.uid, user.gid, user.username, user.fullname, user.administrator]
    assert VTUser.userWithName("ben").administrator
    user.resultsPerPage = 50
    settings.searchFolders = [folder]
    user.defaultSearchFolder = settings.searchFolders[0]
    user.defaultSearchKind = VTSearchKind.kindWithTitle("PDF Documents")
    saved = VTSavedSearch.alloc.initWithQuery("q", title: "mine")
    user.addSavedSearch(saved)
    settings.reloadConfig
    assert_equal 50, user.resultsPerPage
    assert_equal "Tree", user.defaultSearchFolder.title
    assert_equal "PDF Documents", user.defaultSearchKind.title
    assert(user.savedSearches.any? { |search| search.isEqual(saved) })
    user.removeSavedSearch(saved)
    assert_empty user.savedSearches
  end

  def test_logins_are_counted
    user = ann
    user.login
    user.login
    assert_equal 1, settings.currentParallelUsers
    user.logout
    assert_equal 0, settings.parallelUserCount
  end

  def test_a_password_is_checked
    salted = "secret".crypt("$6$saltsalt$")
    File.write(File.join(@root, "etc/shadow"), "ann:#{salted}:19000:0:99999:7:::\n", perm: 0o600)
    VistaroRuby.restart
    assert_equal 2001, VTUser.userWithName("ann", password: "secret").uid
    assert_nil VTUser.userWithName("ann", password: "wrong")
    assert_nil VTUser.userWithName("ann", password: "secret\0more")
    directory = DirServiceWrapper.alloc.init
    assert directory.authenticateUser("ann", password: "secret")
    assert_raises(ArgumentError) { directory.authenticateUser("ann", password: "secret\0") }
  end

  def test_the_directory_is_asked
    directory = DirServiceWrapper.alloc.init
    record = directory.attributeDataForNodeOfType(
      "dsRecTypeStandard:Users", value: "ann", attr1: "dsAttrTypeStandard:RecordName",
                                 attr2: nil, attr3: nil, attr4: nil, attr5: nil, attr6: nil
    )
    assert_equal({ "dsAttrTypeStandard:RecordName" => ["ann"] }, record)
    directory.cleanup
    directory.cleanup
  end

  def test_folders_are_stored_and_read_back
    group = VTSearchFolderGroup.alloc.initWithTitle("G")
    group.addFolder(folder)
    stored = VTSearchFolder.serializedDataFromFolderArray([group])
    assert_equal "Tree", stored[0]["children"][0]["title"]
    back = VTSearchFolder.deserializedFoldersFromStorage(stored.to_a)
    assert group.isEqual(back[0])
    refute group.isEqual("G")
    assert_equal [@tree], back[0].paths
    assert_nil VTSearchFolder.alloc.initWithTitle("base").paths
  end

  def test_kinds
    assert_includes VTSearchKind.searchableKinds.map(&:title), "PDF Documents"
    assert_equal "PDF Documents", VTSearchKind.kindForContentTypes(["com.adobe.pdf"]).title
    assert_equal ["a.b"], VTSearchKind.alloc.initWithTitle("mine", types: ["a.b"]).types
  end

  def test_groups_can_be_made_by_hand
    records = [{ "kMDItemPath" => "/a" }, { kMDItemPath: "/b" }]
    kind = VTSearchKind.alloc.initWithTitle("mine", types: ["only.one"])
    group = VTSearchResult.alloc.initWithGroupKind(kind, results: records, searchFolders: [folder],
                                                         attributeKeys: ["kMDItemPath"], user: ann)
    container = VTSearchResultContainer.alloc.initWithUser(ann, results: [group])
    assert_equal(["/a", "/b", nil], (0..2).map { |i| group.pathForItemAtIndex(i) })
    assert_equal 1, group.numberOfPages
    container.removeResultsWithContentType("only.one")
    assert_equal 0, container.count
    assert_nil VTSearchResultContainer.alloc.initWithUser(nil, results: nil).results
  end

  def test_share_points_are_listed
    assert_kind_of Enumerable, VTSharePoint.allSharePoints
  end
end
