# frozen_string_literal: true

module VistaroWeb
  # The searches that a user keeps under a title. To be called with the library entered.
  module SavedSearches
    LONGEST_TITLE = 200

    # One of them, as pages show it; `scope` is the title of its folder, "" for everywhere.
    Saved = Struct.new(:title, :query, :scope) do
      def address
        "/search?#{Rack::Utils.build_query({ q: query, in: scope, kind: '' })}"
      end
    end

    # In the order in which they were saved.
    def self.of(user)
      user.savedSearches.map do |search|
        Saved.new(search.title.to_s, search.query.to_s, search.searchFolderTitle.to_s)
      end
    end

    # Keeps the query under the title, in place of what was kept under it.
    def self.keep(user, title, query, scope)
      search = VistaroRuby::VTSavedSearch.alloc.initWithQuery(query, title: title)
      search.searchFolderTitle = scope
      user.addSavedSearch(search)
    end

    # Forgets what is kept under the title.
    def self.forget(user, title)
      user.removeSavedSearch(VistaroRuby::VTSavedSearch.alloc.initWithQuery("", title: title))
    end
  end
end
