# frozen_string_literal: true

module VistaroWeb
  module Search
    # What a search can be narrowed to, and what can be searched for again. To be made with the library
    # entered.
    class Choices
      include VistaroRuby

      # A search folder or group: how deep it lies in groups, and whether it is chosen.
      Scope = Struct.new(:title, :depth, :chosen)

      # Short names that are offered while somebody types; those that the attributes go by are more.
      NAMES = %w[kind author date size title name created modified keyword subject album].freeze

      # Titles: of the folder, and of the kind, "" for all; and what there is to choose from.
      attr_reader :scope, :kind, :scopes, :kinds, :saved

      def initialize(request, user)
        @scope = request.scope || title_of(user.defaultSearchFolder)
        @kind = request.kind || title_of(user.defaultSearchKind)
        @scopes = scopes_in(VTSettings.sharedInstance.searchFolders, 0)
        @kinds = VTSearchKind.searchableKinds.map(&:title)
        @saved = SavedSearches.of(user)
      end

      # What may be meant by what somebody begins to type.
      def completions
        [*NAMES.map { |name| "#{name}:" }, *@kinds.map { |title| "kind:#{quoted(title.downcase)}" },
         *%w[today yesterday this-week last-week this-month this-year].map { |day| "date:#{day}" },
         *@saved.map(&:query)]
      end

      private

      def title_of(chosen)
        chosen&.title.to_s
      end

      def quoted(text)
        text.include?(" ") ? %("#{text}") : text
      end

      def scopes_in(folders, depth)
        folders.flat_map do |folder|
          members = folder.is_a?(VTSearchFolderGroup) ? folder.folders : []
          [Scope.new(folder.title, depth, folder.title == @scope), *scopes_in(members, depth + 1)]
        end
      end
    end
  end
end
