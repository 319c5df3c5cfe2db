# frozen_string_literal: true

module VistaroWeb
  module Search
    # What a search can be narrowed to. To be made with the library entered.
    class Choices
      # A search folder or group: how deep it lies in groups, and whether it is chosen.
      Scope = Struct.new(:title, :depth, :chosen)

      attr_reader :scopes

      def initialize(request, user)
        @chosen = request.scope || user.defaultSearchFolder&.title || ""
        @scopes = scopes_in(VistaroRuby::VTSettings.sharedInstance.searchFolders, 0)
      end

      # The title of the chosen folder; "" for all of them.
      def scope
        @chosen
      end

      private

      def scopes_in(folders, depth)
        folders.flat_map do |folder|
          members = folder.is_a?(VistaroRuby::VTSearchFolderGroup) ? folder.folders : []
          [Scope.new(folder.title, depth, folder.title == @chosen), *scopes_in(members, depth + 1)]
        end
      end
    end
  end
end
