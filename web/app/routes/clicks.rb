# frozen_string_literal: true

require_relative "../item"
require_relative "../preferences"

module VistaroWeb
  module Routes
    # What a click on a name in a list of results does, as its user prefers. Registered before Item,
    # whose page it is when nothing else is wanted, or possible.
    module Clicks
      def self.registered(app)
        app.get "/item/:id" do
          pass unless params["click"]
          require_login
          target = with_item { |item| click_target(item, VistaroWeb::Preferences.action_of(user)) }
          pass unless target
          redirect target, 303
        end

        app.helpers Helpers
      end

      # What the route needs besides.
      module Helpers
        # Nil for the item's page.
        def click_target(item, action)
          case action
          when "download" then "/item/#{params['id']}/download" if item.downloadable?
          when "open" then ItemPage.open_address(item.open_address(**visitors_machine))
          end
        end
      end
    end
  end
end
