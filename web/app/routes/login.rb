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
          outcome = log_in(field("name"), field("password"))
          redirect own_target(params["to"]), 303 if outcome.user
          status outcome.kind == :throttled ? 429 : 401
          page :"login/form", problem: outcome.kind, name: field("name"), target: own_target(params["to"])
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
        # Begins a session when name and password are right; gives the Login::Outcome.
        def log_in(name, password)
          outcome = settings.login.attempt(name, password, request.ip)
          log_event("login_#{outcome.kind}", name: name[0, 256])
          take_session(*settings.store.begin_for(outcome.user)) if outcome.user
          outcome
        end

        # The address to go to afterwards: one of ours, whatever was asked for.
        def own_target(address, otherwise = "/")
          address.to_s.match?(%r{\A/(?![/\\])[^\x00-\x20\x7f\\]*\z}) ? address : otherwise
        end
      end
    end
  end
end
