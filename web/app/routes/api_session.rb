# frozen_string_literal: true

module VistaroWeb
  module Routes
    # Logging in and out for programs; see docs/web-api.md.
    module APISession
      def self.registered(app)
        app.get "/api/session" do
          json({ user: session_of_visitor&.username, token: form_token })
        end

        app.post "/api/session" do
          require_form_token
          outcome = log_in(field("name"), field("password"))
          json({ error: outcome.kind }, outcome.kind == :throttled ? 429 : 401) unless outcome.user
          json({ user: session_of_visitor.username, token: form_token })
        end

        app.post "/api/session/end" do
          require_form_token
          log_event("logout")
          drop_session
          json({ user: nil })
        end
      end
    end
  end
end
