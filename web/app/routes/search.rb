# frozen_string_literal: true

require_relative "../saved_searches"
require_relative "../search/run"
require_relative "../search/choices"

module VistaroWeb
  module Routes
    # The search page.
    module Search
      def self.registered(app)
        app.helpers Helpers
        app.set :searches_running, Security::RunningLimit.new(4)

        app.get "/" do
          redirect "/search", 303
        end

        app.get "/search" do
          require_login
          asked = VistaroWeb::Search::Request.new(params)
          choices, results = run_search(asked) do |search|
            [VistaroWeb::Search::Choices.new(asked, user), (search.results unless asked.blank?)]
          end
          if params["part"] == "results"
            next part(:"search/results", asked: asked, results: results, saved: choices.saved)
          end

          page :"search/page", asked: asked, choices: choices, results: results
        end
      end

      # What the pages need besides.
      module Helpers
        # Gives what the block makes of a Search::Run, with the library entered. Raises
        # Security::RunningLimit::Exceeded when the user has enough running.
        def run_search(asked)
          settings.searches_running.run(user.uid) do
            Library.enter { yield VistaroWeb::Search::Run.new(asked, session_of_visitor) }
          end
        end

        # The page of the item, from which one comes back to the search.
        def item_address(item, asked)
          @way_back ||= Rack::Utils.build_query(
            "click" => 1, "from" => asked.address(page: asked.page_or_nil)
          )
          "/item/#{item.id}?#{@way_back}"
        end
      end
    end
  end
end
