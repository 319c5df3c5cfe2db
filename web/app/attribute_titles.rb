# frozen_string_literal: true

require_relative "type_icons"

module VistaroWeb
  # The names that people have for attributes, in the language of whoever looks: the library gives them
  # in that of the server.
  module AttributeTitles
    # The table of each language and its column with the names, the first of which is that of the key.
    TABLES = { "en" => ["attributes.tsv", 3], "de" => ["attributes.de.tsv", 1] }.freeze
    FOLDER = File.dirname(TypeIcons::FOLDER)

    # {"en" => {"kMDItemFSSize" => "Size", …}, "de" => …}
    NAMES = TABLES.transform_values do |(file, column)|
      File.readlines(File.join(FOLDER, file), chomp: true, encoding: "UTF-8").drop(1).to_h do |line|
        cells = line.split("\t")
        [cells[0], cells[column].to_s]
      end.freeze
    end.freeze

    # The attribute that goes by a name, in whatever language.
    KEYS = NAMES.values.reverse.flat_map { |names| names.map(&:reverse) }.to_h.freeze

    # The name in the language; as it is when there is no other.
    def self.in(language, title)
      NAMES.fetch(language, {})[KEYS[title]].to_s.then { |name| name.empty? ? title : name }
    end
  end
end
