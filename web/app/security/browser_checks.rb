# frozen_string_literal: true

require_relative "host_names"

module VistaroWeb
  module Security
    # Refuses what a browser would not send if one of our own pages had made it: a request under a
    # name that is not ours, and one that changes something and comes from another site. (That a
    # form is ours is checked besides, by its token.)
    class BrowserChecks
      SAFE = %w[GET HEAD].freeze
      METHODS = [*SAFE, "POST"].freeze
      # No form of ours is longer; one that is would be read into memory.
      MOST_BYTES = 1_000_000

      def initialize(app)
        @app = app
        @names = HostNames.new
      end

      def call(env)
        status, reason = refusal(env)
        return @app.call(env) unless status

        EventLog.write("refused", reason: reason, source: env["REMOTE_ADDR"],
                                  method: env["REQUEST_METHOD"], host: env["HTTP_HOST"],
                                  origin: env["HTTP_ORIGIN"])
        [status, { "Content-Type" => "text/plain; charset=utf-8" }, ["#{status}\n"]]
      end

      private

      def refusal(env)
        return [405, "method"] unless METHODS.include?(env["REQUEST_METHOD"])
        return [413, "length"] if env["CONTENT_LENGTH"].to_i > MOST_BYTES
        return [421, "host"] unless @names.include?(env["HTTP_HOST"])
        return if foreign_fetch_allowed?(env) && same_origin?(env)

        [403, "origin"]
      end

      # Another site may link to a page of ours, and do nothing else.
      def foreign_fetch_allowed?(env)
        site = env["HTTP_SEC_FETCH_SITE"]
        return true if site.nil? || site == "same-origin" || site == "none"

        SAFE.include?(env["REQUEST_METHOD"]) && env["HTTP_SEC_FETCH_MODE"] == "navigate" &&
          env["HTTP_SEC_FETCH_DEST"] == "document"
      end

      # The scheme is not compared: a proxy may speak another one to us than the browser to it.
      def same_origin?(env)
        origin = env["HTTP_ORIGIN"]
        return true if origin.nil?

        ours = env["HTTP_HOST"]
        origin.match?(%r{\Ahttps?://}) && authority(origin.sub(%r{\A\w+://}, "")) == authority(ours)
      end

      def authority(text)
        text.downcase.sub(/:(?:80|443)\z/, "")
      end
    end
  end
end
