# frozen_string_literal: true

require_relative "test_helper"

# Searches that one keeps.
class SavedTest < WebTest
  def save(title, query = "plan", scope = "")
    get "/saved/new", { "q" => query, "in" => scope }
    post "/saved", { "token" => token, "title" => title, "q" => query, "in" => scope }
  end

  def test_keeps_a_search_and_runs_it_again
    write("plan.txt")
    log_in
    save("My plans", "plan", "Tree")
    follow_redirect!
    assert_includes body, "My plans"
    get body[%r{href="(/search\?q=plan[^"]*)"}, 1].gsub("&amp;", "&")
    assert_includes body, "plan.txt"
    settings.reloadConfig
    kept = VTUser.userWithName("ann").savedSearches.map { |s| [s.title, s.query, s.searchFolderTitle] }
    assert_equal [["My plans", "plan", "Tree"]], kept
  end

  def test_the_same_title_replaces
    log_in
    save("Mine", "one")
    save("Mine", "two")
    get "/saved"
    refute_includes body, "<code>one</code>"
    assert_includes body, "<code>two</code>"
  end

  def test_forgets_a_search
    log_in
    save("Mine")
    get "/saved"
    post "/saved/remove", { "token" => token, "title" => "Mine" }
    follow_redirect!
    assert_includes body, "No search is saved yet"
  end

  def test_refuses_what_cannot_be_kept
    log_in
    { "" => "Please give it a name", "  " => "Please give it a name", "a\u0001b" => "characters",
      "x" * 201 => "too long" }.each do |title, problem|
      save(title)
      assert_equal 422, status
      assert_includes body, problem
    end
    save("Mine", " ")
    assert_includes body, "nothing to search for"
    assert_empty VTUser.userWithName("ann").savedSearches
  end

  def test_are_ones_own
    log_in
    save("Mine")
    clear_cookies
    log_in("ben")
    get "/saved"
    refute_includes body, "Mine"
  end
end
