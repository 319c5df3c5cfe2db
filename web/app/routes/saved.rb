# frozen_string_literal: true

require_relative "../saved_searches"

module VistaroWeb
  module Routes
    # The searches that a user keeps.
    module Saved
      def self.registered(app)
        app.helpers Helpers

        app.get "/saved" do
          require_login
          page :"saved/list", saved: Library.enter { SavedSearches.of(user) }
        end

        app.get "/saved/new" do
          require_login
          page :"saved/form", search: saved_search, problem: nil
        end

        app.post "/saved" do
          require_form_token
          require_login
          search = saved_search
          problem = problem_with(search)
          halt 422, page(:"saved/form", search: search, problem: problem) if problem

          Library.enter { SavedSearches.keep(user, search.title, search.query, search.scope) }
          redirect "/saved", 303
        end

        app.post "/saved/remove" do
          require_form_token
          require_login
          Library.enter { SavedSearches.forget(user, field("title")) }
          redirect "/saved", 303
        end
      end

      # What the routes need besides.
      module Helpers
        # What the form, or the search page that leads to it, says.
        def saved_search
          query = field("q")
          title = params.key?("title") ? field("title").strip : query
          SavedSearches::Saved.new(title, query, field("in"))
        end

        # What the settings file could not hold, or nobody could find again; nil when all is well.
        def problem_with(search)
          return :no_title if search.title.empty?
          return :no_query if search.query.strip.empty?
          return :long_title if search.title.length > SavedSearches::LONGEST_TITLE

          :odd if search.to_a.any? { |text| text.match?(/[[:cntrl:]\ufffe\uffff]/) }
        end
      end
    end
  end
end
