# frozen_string_literal: true

require_relative "../saved_searches"
require_relative "../search/run"
require_relative "../search/choices"
require_relative "../search/walks"

module VistaroWeb
  module Routes
    # The search page.
    module Search
      # How many seconds others wait for somebody whose search walks the files. A small tree is done
      # by then; what takes longer begins anew, out of everybody's way.
      LONGEST_WALK_INSIDE = 0.03

      def self.registered(app)
        app.helpers Helpers
        app.set :searches_running, Security::RunningLimit.new(4)
        app.set :walks, VistaroWeb::Search::Walks.new

        app.get "/" do
          redirect "/search", 303
        end

        app.get "/search" do
          require_login
          asked = VistaroWeb::Search::Request.new(params)
          results = run_search(asked) unless asked.blank?
          next results_alone(asked, results) if params["part"] == "results"

          choices = Library.enter { VistaroWeb::Search::Choices.new(asked, user) }
          page :"search/page", asked: asked, choices: choices, results: results
        end
      end

      # What the pages need besides.
      module Helpers
        # The Search::Results of what is asked for. Raises Security::RunningLimit::Exceeded when the
        # user, or everybody together, has enough running.
        def run_search(asked)
          results = settings.searches_running.run(session_of_visitor.uid) do
            Library.enter do
              VistaroWeb::Search::Run.new(asked, user).results(longest_walk: Search::LONGEST_WALK_INSIDE)
            end || walk(asked)
          end
          results.identify(session_of_visitor.item_ids)
        end

        # The same, where the files have to be walked.
        def walk(asked)
          settings.walks.results(asked, session_of_visitor, of: page_that_asks, &method(:visitor_is_gone?))
        rescue VistaroWeb::Search::Walks::Outdated
          halt 409
        end

        # The page whose script asks again and again while somebody types, and wants the last answer
        # only; nil when nothing tells.
        def page_that_asks
          id = field("page_id")[0, 64]
          [session_of_visitor, id] unless id.empty?
        end

        def results_alone(asked, results)
          saved = results ? [] : Library.enter { SavedSearches.of(user) }
          part(:"search/results", asked: asked, results: results, saved: saved)
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
