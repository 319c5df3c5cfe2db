# frozen_string_literal: true

require_relative "../item"
require_relative "../download"
require_relative "../item_page"

module VistaroWeb
  module Routes
    # One file: what is known of it, and its content.
    module Item
      def self.registered(app)
        app.helpers Helpers

        app.get "/item/:id" do
          require_login
          shown = with_item { |item| ItemPage.new(item, visitors_machine) }
          page :"item/page", item: shown, id: params["id"], back: own_target(params["from"], "/search")
        end

        app.get "/item/:id/download" do
          require_login
          file, name, type = with_item do |item|
            halt 404 unless item.downloadable?
            [item.open_file || halt(404), item.name, item.mime_type]
          end
          log_event("download", name: name)
          Download.new(file, name, type).response(env)
        end
      end

      # What the routes need besides.
      module Helpers
        # Yields the item of the address with the library entered, and gives what the block gives. Not
        # found is whatever the visitor may not see.
        def with_item
          Library.enter do
            yield VistaroWeb::Item.find(session_of_visitor, params["id"]) || halt(404)
          end
        end

        # The kind of machine that the visitor sits at.
        def visitors_machine
          agent = request.user_agent.to_s
          { windows: agent.include?("Windows"), local: ["127.0.0.1", "::1"].include?(request.ip) }
        end
      end
    end
  end
end
