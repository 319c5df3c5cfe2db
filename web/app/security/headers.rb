# frozen_string_literal: true

module VistaroWeb
  module Security
    # What every answer tells the browser to keep to. Nothing is embedded from or by another site,
    # no script or style stands in a page, and what was found is not kept.
    class Headers
      POLICY = [
        "default-src 'none'", "script-src 'self'", "style-src 'self'", "img-src 'self'",
        "connect-src 'self'", "form-action 'self'", "base-uri 'none'", "object-src 'none'",
        "frame-ancestors 'none'"
      ].join("; ").freeze

      ALWAYS = {
        "Content-Security-Policy" => POLICY,
        "X-Content-Type-Options" => "nosniff",
        # Not "no-referrer", with which browsers send "Origin: null" to ourselves.
        "Referrer-Policy" => "same-origin",
        "Cross-Origin-Opener-Policy" => "same-origin",
        "Cross-Origin-Resource-Policy" => "same-origin",
        "Permissions-Policy" => "camera=(), geolocation=(), microphone=(), payment=(), usb=()",
        "X-Frame-Options" => "DENY"
      }.freeze

      ASSETS = %r{\A/(?:css/|js/|icon\.svg\z)}

      def initialize(app)
        @app = app
      end

      def call(env)
        status, headers, body = @app.call(env)
        headers["Cache-Control"] ||= kept(env)
        [status, headers.merge(ALWAYS), body]
      end

      private

      # Our own scripts and styles are for everybody. Those that an address with a digest asks for
      # never change.
      def kept(env)
        return "no-store" unless env["PATH_INFO"].match?(ASSETS)

        env["QUERY_STRING"].empty? ? "no-cache" : "public, max-age=31536000, immutable"
      end
    end
  end
end
