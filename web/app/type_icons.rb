# frozen_string_literal: true

module VistaroWeb
  # The icons of content types that ship with the server.
  class TypeIcons
    FOLDER = File.join(ENV.fetch("VISTARO_RESOURCES", "").then do |folder|
      folder.empty? ? File.expand_path("../../resources", __dir__) : folder
    end, "icons")
    FALLBACK = "public.item"

    def initialize(folder = FOLDER)
      @files = Dir.glob("#{folder}/*.svg").to_h { |file| [File.basename(file, ".svg"), file] }
    end

    # Of these types, the most specific one first, the first that has an icon.
    def name_for(types)
      types.find { |type| @files.key?(type) } || FALLBACK
    end

    # The file of the icon called so; nil when there is none.
    def file(name)
      @files[name]
    end
  end
end
