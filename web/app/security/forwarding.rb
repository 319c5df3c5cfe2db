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

      # The settings are asked only when a request claims something: a style need not wait for the
      # library.
      def call(env)
        claimed = env.keys.grep(/\AHTTP_(?:X_FORWARDED_|FORWARDED\z)/).to_h { |key| [key, env.delete(key)] }
        believe(env, claimed) if !claimed.empty? && proxy?(env["REMOTE_ADDR"])
        @app.call(env)
      end

      private

      def believe(env, claimed)
        client = claimed["HTTP_X_FORWARDED_FOR"].to_s[/[^,\s]+\s*\z/]
        env["REMOTE_ADDR"] = client.strip if client
        env["rack.url_scheme"] = "https" if claimed["HTTP_X_FORWARDED_PROTO"].to_s.casecmp?("https")
      end

      def proxy?(address)
        Library.enter do
          named = VistaroRuby::VTSettings.sharedInstance.valueForUndefinedKey(SETTING)
          named.respond_to?(:include?) && !named.is_a?(String) && named.include?(address)
        end
      end
    end
  end
end
