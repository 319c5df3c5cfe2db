# frozen_string_literal: true

require "minitest/autorun"
require_relative "../app/text"

# The texts of the pages.
class TextValuesTest < Minitest::Test
  Text = VistaroWeb::Text

  def test_counts_and_numbers
    assert_equal "1 item", Text.fetch("en", "search.found", count: 1)
    assert_equal "0 items", Text.fetch("en", "search.found", count: 0)
    assert_equal "12,345 items", Text.fetch("en", "search.found", count: 12_345)
    assert_equal "12.345 Objekte", Text.fetch("de", "search.found", count: 12_345)
  end

  def test_values_are_put_in_as_they_are
    assert_equal "“%{x}%s” is not a number.", Text.fetch("en", "search.problem_number", part: "%{x}%s")
  end

  def test_an_unknown_text_is_a_mistake
    assert_raises(KeyError) { Text.fetch("en", "search.nonsense") }
    assert_raises(KeyError) { Text.fetch("en", "search.problem_number", wrong: 1) }
  end

  def test_the_language_that_is_asked_for_first_and_spoken
    {
      nil => "en", "" => "en", "de" => "de", "de-AT,de;q=0.9,en;q=0.8" => "de",
      "fr,de;q=0.5,en;q=0.4" => "de",
      "en;q=0.1,de;q=0.9" => "de", "fr" => "en", "*;q=0.1" => "en", ";;;q=,,=" => "en"
    }.each { |header, language| assert_equal language, Text.preferred(header), header.inspect }
  end
end
