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
          choices, results = settings.searches_running.run(user.uid) do
            Library.enter do
              [VistaroWeb::Search::Choices.new(asked, user),
               (VistaroWeb::Search::Run.new(asked, session_of_visitor).results unless asked.blank?)]
            end
          end
          if params["part"] == "results"
            next part(:"search/results", asked: asked, results: results, saved: choices.saved)
          end

          page :"search/page", asked: asked, choices: choices, results: results
        end
      end

      # What the pages need besides.
      module Helpers
        # The page of the item, from which one comes back to the search.
        def item_address(item, asked)
          "/item/#{item.id}?#{Rack::Utils.build_query('from' => asked.address(page: asked.page_or_nil))}"
        end
      end
    end
  end
end
