# frozen_string_literal: true

require_relative "test_helper"

# The search page as a person sees it.
class SearchPageTest < WebTest
  def test_needs_a_login_and_comes_back_afterwards
    get "/search?q=a%20b"
    assert_equal 303, status
    assert_equal "/login?to=%2Fsearch%3Fq%3Da%2520b", last_response["Location"]
  end

  def test_finds_files_by_a_part_of_their_name
    write("yearly report.txt")
    write("other.txt")
    log_in
    get "/search", { "q" => "report" }
    assert_includes body, "1 item"
    assert_includes body, "yearly report.txt"
    refute_includes body, "other.txt"
  end

  def test_shows_names_with_markup_as_text
    write("a <b>bold<!--.txt")
    log_in
    get "/search", { "q" => "bold" }
    assert_includes body, "a &lt;b&gt;bold&lt;!--.txt"
  end

  def test_addresses_hold_no_path
    write("secret-plan.txt")
    log_in
    get "/search", { "q" => "plan" }
    links = body.scan(%r{href="(/item/[^"]+)"}).flatten
    assert_equal 1, links.size
    assert_match(%r{\A/item/[\w-]{22}\?click=1&amp;from=%2Fsearch%3Fq%3Dplan\z}, links.first)
  end

  def test_says_that_nothing_was_found
    log_in
    get "/search", { "q" => "<i>" }
    assert_includes body, "Nothing was found for “&lt;i&gt;”"
  end
end
