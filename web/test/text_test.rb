# frozen_string_literal: true

require_relative "test_helper"

# The texts of the pages in all languages.
class TextTest < Minitest::Test
  include VistaroWeb

  PLACES = Dir[File.expand_path("../{app,views}/**/*.{rb,erb}", __dir__)].freeze

  # t("key") and t(something ? "key" : "key").
  USE = /(?<![a-z])t\((?:[^()"]*\? )?"([^"]+)"(?: : "([^"]+)")?/

  def test_are_there_in_every_language
    english = Text::TABLES.fetch("en")
    assert_operator english.size, :>, 150
    Text::TABLES.each { |language, table| assert_equal english.keys.sort, table.keys.sort, language }
  end

  def test_take_the_same_values_in_every_language
    Text::TABLES.fetch("en").each do |key, text|
      assert_equal values_in(text), values_in(Text::TABLES.fetch("de").fetch(key)), key
    end
  end

  def test_are_not_empty_and_differ
    Text::TABLES.each_value { |table| assert_empty(table.select { |_, text| text.strip.empty? }.keys) }
    same = Text::TABLES.fetch("en").select { |key, text| Text::TABLES.fetch("de")[key] == text }
    assert_operator same.size, :<, 30, same.keys.inspect
  end

  # `t("page.key")` wherever it stands; of `t("page.key_#{…}")` the beginning.
  def test_are_there_for_every_key_that_is_used
    keys = Text::TABLES.fetch("en").keys
    PLACES.each do |file|
      File.read(file).scan(USE).flatten.compact.each do |key|
        beginning = key[/\A[^#]+/]
        found = keys.any? { |other| key == beginning ? used?(other, key) : other.start_with?(beginning) }
        assert found, "#{key} in #{File.basename(file)}"
      end
    end
  end

  def test_name_attributes_in_every_language
    assert_equal "Größe", AttributeTitles.in("de", "Size")
    assert_equal "Size", AttributeTitles.in("en", "Größe")
    assert_equal "Size", AttributeTitles.in("en", "Size")
    assert_equal "No attribute", AttributeTitles.in("de", "No attribute")
  end

  def test_fall_back_to_no_other_language
    assert_raises(KeyError) { Text.fetch("de", "search.no_such_text") }
  end

  private

  def used?(other, key)
    other == key || (other.start_with?("#{key}_") && other.match?(/_(?:one|other)\z/))
  end

  def values_in(text)
    text.scan(/%\{\w+\}/).sort
  end
end
