# frozen_string_literal: true

module VistaroWeb
  module Administration
    # The search folders as the page of the administration lists them, with what is the case now. To be
    # made with the library entered.
    class FolderRows
      include VistaroRuby

      # `download` is 1, 0, or -1 for a group whose folders differ; `share`, `afp` and `smb` are nil when
      # there is none; `group` tells a group, `there` whether the folder is.
      Row = Struct.new(:title, :depth, :group, :path, :there, :download, :share, :afp, :smb, :own_addresses,
                       keyword_init: true)

      def self.of(folders, depth = 0)
        folders.flat_map do |folder|
          group = folder.is_a?(VTSearchFolderGroup)
          row = Row.new(title: folder.title.to_s, depth: depth, group: group, download: folder.download)
          next [row, *of(folder.folders.to_a, depth + 1)] if group

          [about(row, folder)]
        end
      end

      def self.about(row, folder)
        row.path = folder.path.to_s
        row.there = File.directory?(row.path)
        row.own_addresses = folder.userDefinedURLPaths
        row.share = folder.sharePointName
        row.afp = folder.afpURLPath if row.own_addresses || folder.afpAvailable
        row.smb = folder.smbURLPath if row.own_addresses || folder.smbAvailable
        row
      end
      private_class_method :about
    end
  end
end
