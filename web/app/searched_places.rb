# frozen_string_literal: true

module VistaroWeb
  # Where the settings allow to search at this moment.
  module SearchedPlaces
    # Whether `path`, absolute and without links, lies in a search folder. To be called with the
    # library entered.
    def self.include?(path)
      folders.any? do |folder|
        path == folder || path.start_with?(folder.end_with?("/") ? folder : "#{folder}/".b)
      end
    end

    def self.folders
      paths = VistaroRuby::VTSettings.sharedInstance.searchFolders.flat_map { |folder| folder.paths.to_a }
      paths.grep(String).filter_map do |path|
        File.realpath(path).b
      rescue SystemCallError
        nil
      end
    end
    private_class_method :folders
  end
end
