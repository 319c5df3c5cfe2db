# frozen_string_literal: true

require_relative "../login"

module VistaroWeb
  module Routes
    # Logging in and out.
    module Login
      def self.registered(app)
        app.get "/login" do
          redirect "/", 303 if session_of_visitor
          page :"login/form", problem: nil, name: nil, target: own_target(params["to"])
        end

        app.post "/login" do
          require_form_token
          name = params["name"].to_s
          outcome = settings.login.attempt(name, params["password"].to_s, request.ip)
          log_event("login_#{outcome.kind}", name: name)
          unless outcome.user
            status outcome.kind == :throttled ? 429 : 401
            next page(:"login/form", problem: outcome.kind, name: name,
                                     target: own_target(params["to"]))
          end
          take_session(*settings.store.begin_for(outcome.user))
          redirect own_target(params["to"]), 303
        end

        app.post "/logout" do
          require_form_token
          log_event("logout")
          drop_session
          redirect "/login", 303
        end

        app.helpers Helpers
        app.set :login, VistaroWeb::Login.new
      end

      # What the routes need besides.
      module Helpers
        # The address to go to afterwards: one of ours, whatever was asked for.
        def own_target(address, otherwise = "/")
          address.to_s.match?(%r{\A/(?![/\\])[^\x00-\x20\x7f\\]*\z}) ? address : otherwise
        end
      end
    end
  end
end
