# frozen_string_literal: true

require_relative "type_icons"

module VistaroWeb
  # What people call the content types of files, in the language of whoever looks: the library gives it
  # in English.
  module TypeNames
    FOLDER = File.dirname(TypeIcons::FOLDER)

    # {"de" => {"public.image" => "Bild", …}}: the table of each language but English.
    TABLES = Dir[File.join(FOLDER, "types.*.tsv")].to_h do |file|
      rows = File.readlines(file, chomp: true, encoding: "UTF-8").drop(1)
      [file[/types\.(\w+)\.tsv\z/, 1], rows.to_h { |line| line.split("\t", 2) }.freeze]
    end.freeze

    # The name of the most specific of the types that has one in the language; nil when none has.
    # `types` has the most specific one first.
    def self.in(language, types)
      names = TABLES[language] or return
      types.filter_map { |type| names[type] }.first
    end
  end
end
