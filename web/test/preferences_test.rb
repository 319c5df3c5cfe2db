# frozen_string_literal: true

require_relative "test_helper"

# Preferences, each user's own.
class PreferencesTest < WebTest
  def test_are_kept_for_the_user
    settings.searchFolders = [folder("One"), folder("Two")]
    log_in
    save("per_page" => "7", "folder" => "Two", "kind" => "Images", "action" => "download")
    assert_equal "/preferences?done=saved", last_response["Location"]
    settings.reloadConfig
    ann = VTUser.userWithName("ann")
    assert_equal [7, "Two", "Images", 1], [ann.resultsPerPage, ann.defaultSearchFolder.title,
                                           ann.defaultSearchKind.title, ann.defaultAction]
    assert_equal 25, VTUser.userWithName("ben").resultsPerPage
    follow_redirect!
    assert_includes body, "Your preferences were saved."
    assert_match(/<option value="Two" selected>/, body)
    assert_match(/value="download" checked/, body)
  end

  def test_can_be_taken_back
    log_in
    save("folder" => "Tree", "kind" => "Images")
    save("folder" => "", "kind" => "")
    ann = VTUser.userWithName("ann")
    assert_nil ann.defaultSearchFolder
    assert_nil ann.defaultSearchKind
  end

  def test_refuse_what_cannot_be_and_keep_what_was_typed
    log_in
    { "per_page" => ["0", "201", "-1", "x", "", "1e9", "7\n"],
"action" => ["", "remove"] }.each do |name, values|
      values.each do |value|
        save("folder" => "Tree", name => value)
        assert_equal 422, status, "#{name} #{value.inspect}"
        assert_includes body, 'role="alert"'
        assert_match(/<option value="Tree" selected>/, body)
      end
    end
    assert_equal 25, VTUser.userWithName("ann").resultsPerPage
  end

  def test_need_a_login_and_a_form_of_ours
    get "/preferences"
    assert_equal 303, status
    log_in
    post "/preferences", { "per_page" => "7", "action" => "show" }
    assert_equal 403, status
    assert_equal 25, VTUser.userWithName("ann").resultsPerPage
  end

  def test_lose_nothing_of_what_a_command_changed_meanwhile
    log_in
    path = VTSettings.settingsStoragePath
    settings.setValue("kept", forKey: "somethingElse")
    changed = File.read(path).sub("kept", "changed")
    File.write(path, changed)
    save("per_page" => "9")
    settings.reloadConfig
    assert_equal "changed", settings.valueForKey("somethingElse")
    assert_equal 9, VTUser.userWithName("ann").resultsPerPage
  end

  def test_leave_a_settings_file_that_cannot_be_understood
    log_in
    settings.saveStorage
    File.write(VTSettings.settingsStoragePath, "<plist><dict>")
    save("per_page" => "9")
    assert_equal 422, status
    assert_includes body, "cannot be understood"
    assert_equal "<plist><dict>", File.read(VTSettings.settingsStoragePath)
  end

  private

  def save(values)
    get "/preferences"
    post "/preferences", { "token" => token, "per_page" => "25", "folder" => "", "kind" => "",
                           "action" => "show" }.merge(values)
  end
end
