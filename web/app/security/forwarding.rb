# frozen_string_literal: true

module VistaroWeb
  module Security
    # Believes what a request says of where it came from only of a proxy that the settings name, in the
    # global setting "webProxyAddresses", an array of addresses. From anybody else it is left out, or
    # everybody could have any address, and as many guesses at a password.
    class Forwarding
      SETTING = "webProxyAddresses"

      def initialize(app)
        @app = app
      end

      def call(env)
        proxied = proxy?(env["REMOTE_ADDR"])
        client = env["HTTP_X_FORWARDED_FOR"].to_s[/[^,\s]+\s*\z/]
        over_tls = env["HTTP_X_FORWARDED_PROTO"].to_s.casecmp?("https")
        env.delete_if { |key, _| key.start_with?("HTTP_X_FORWARDED_") || key == "HTTP_FORWARDED" }
        if proxied
          env["REMOTE_ADDR"] = client.strip if client
          env["rack.url_scheme"] = "https" if over_tls
        end
        @app.call(env)
      end

      private

      def proxy?(address)
        Library.enter do
          named = VistaroRuby::VTSettings.sharedInstance.valueForUndefinedKey(SETTING)
          named.respond_to?(:include?) && !named.is_a?(String) && named.include?(address)
        end
      end
    end
  end
end
