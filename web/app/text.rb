# frozen_string_literal: true

require "yaml"

module VistaroWeb
  # The texts of the pages in each language: one file for each page and language in `text`, whose
  # keys are that page's.
  module Text
    FOLDER = File.expand_path("../text", __dir__)
    FALLBACK = "en"

    # {"en" => {"search.title" => "Search", …}, "de" => …}
    TABLES = Dir.children(FOLDER).sort.to_h do |language|
      files = Dir[File.join(FOLDER, language, "*.yml")]
      texts = files.flat_map do |file|
        page = File.basename(file, ".yml")
        YAML.safe_load_file(file).map { |key, text| ["#{page}.#{key}", text.to_s.freeze] }
      end
      [language, texts.to_h.freeze]
    end.freeze
    LANGUAGES = TABLES.keys.freeze

    # The text called "page.key", with each %{name} replaced. With `count`, that of "page.key_one"
    # is taken for 1 and "page.key_other" for everything else. Raises KeyError for an unknown key.
    def self.fetch(language, key, count: nil, **values)
      key = "#{key}_#{count == 1 ? 'one' : 'other'}" if count
      text = TABLES.fetch(language)[key] || TABLES[FALLBACK].fetch(key)
      values = values.merge(count: number(language, count)) if count
      return text if values.empty?

      text.gsub(/%\{(\w+)\}/) { values.fetch(Regexp.last_match(1).to_sym).to_s }
    end

    # 12345 as people write it: 12,345 or 12.345.
    def self.number(language, number)
      separator = language == "de" ? "." : ","
      number.to_s.gsub(/(\d)(?=(\d{3})+\z)/, "\\1#{separator}")
    end

    # The language of ours that a header Accept-Language asks for first.
    def self.preferred(header)
      wishes = header.to_s.split(",").filter_map.with_index do |part, index|
        tag, *parameters = part.strip.downcase.split(";")
        weight = parameters.filter_map { |text| text[/\A\s*q=([0-9.]+)\s*\z/, 1] }.first
        [-(weight || 1).to_f, index, tag.to_s[/\A[a-z]+/]]
      end
      wishes.sort.map(&:last).find { |language| LANGUAGES.include?(language) } || FALLBACK
    end
  end
end
