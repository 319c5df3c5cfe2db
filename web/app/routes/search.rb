# frozen_string_literal: true

require_relative "../search/run"
require_relative "../search/choices"

module VistaroWeb
  module Routes
    # The search page.
    module Search
      def self.registered(app)
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
          next part(:"search/results", asked: asked, results: results) if params["part"] == "results"

          page :"search/page", asked: asked, choices: choices, results: results
        end
      end
    end
  end
end
