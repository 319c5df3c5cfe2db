# frozen_string_literal: true

require_relative "../search/json"

module VistaroWeb
  module Routes
    # Searching and files for programs, in JSON; see docs/web-api.md.
    module API
      def self.registered(app)
        app.get "/api/search" do
          require_login
          asked = VistaroWeb::Search::Request.new(params)
          json({ error: "nothing" }, 422) if asked.blank?
          found = VistaroWeb::Search::JSON.new(run_search(asked))
          json(found.data, found.status)
        end

        app.get "/api/items/:id" do
          require_login
          json(with_item { |item| ItemPage.new(item, visitors_machine).data })
        end

        app.get "/api/choices" do
          require_login
          asked = VistaroWeb::Search::Request.new({})
          choices = Library.enter { VistaroWeb::Search::Choices.new(asked, user) }
          json({ folders: choices.scopes.map { |scope| { title: scope.title, depth: scope.depth } },
                 kinds: choices.kinds, saved: choices.saved.map(&:to_h) })
        end
      end
    end
  end
end
