# frozen_string_literal: true

require_relative "../preferences"
require_relative "../settings_change"

module VistaroWeb
  module Routes
    # What each user prefers.
    module Preferences
      def self.registered(app)
        app.get "/preferences" do
          require_login_by_name
          shown = Library.enter { VistaroWeb::Preferences.new(user) }
          page :"preferences/form", shown: shown, problem: nil, done: params["done"] == "saved"
        end

        app.post "/preferences" do
          require_login_by_name
          require_form_token
          wanted = VistaroWeb::Preferences::Wanted.new(field("per_page"), field("folder"), field("kind"),
field("action"))
          problem = wanted.problem || change_settings { wanted.store(user) }
          redirect "/preferences?done=saved", 303 unless problem
          status 422
          shown = Library.enter { VistaroWeb::Preferences.new(user) }
          page :"preferences/form", shown: shown.with(wanted), problem: problem, done: false
        end

        app.helpers Helpers
      end

      # What the routes that change settings need besides.
      module Helpers
        # As require_login; and nothing is kept for those who need not log in, who are all one user.
        def require_login_by_name
          require_login
          halt 404 if session_of_visitor.anonymous?
        end

        # Changes the settings by the block, which is given them. Nil, or what kept that from
        # happening: the key of a text.
        def change_settings(&)
          SettingsChange.make(&)
          nil
        rescue SettingsChange::Failed => e
          log_event("settings_not_changed", reason: e.reason)
          "common.settings_#{e.reason}"
        end
      end
    end
  end
end
