# frozen_string_literal: true

module VistaroWeb
  # How people speak of where a file lies: by the title of the search folder that holds it. To be made
  # with the library entered.
  class SearchFolders
    # Groups left out, the folders in them not, in order.
    def self.concrete(folders = VistaroRuby::VTSettings.sharedInstance.searchFolders)
      folders.flat_map do |folder|
        folder.is_a?(VistaroRuby::VTSearchFolderGroup) ? concrete(folder.folders) : [folder]
      end
    end

    def initialize
      @titles = self.class.concrete.map do |folder|
        [folder.path.to_s.b.delete_suffix("/"), folder.title.to_s]
      end
    end

    # The names that lead to the folder at `path`, which is bytes: from the title of the search folder
    # down, and from the root where none holds it.
    def names_to(path)
      root, title = @titles.find { |folder, _| path == folder || path.start_with?("#{folder}/".b) }
      return path.split("/").reject(&:empty?) unless root

      [title, *path.byteslice(root.bytesize..).split("/").reject(&:empty?)]
    end
  end
end
