# frozen_string_literal: true

require "puma"
require "puma/server"
require_relative "browser_checks"

module VistaroWeb
  module Security
    # Refuses a request whose body is too long while it comes in: by the length that it announces before
    # anything of the body is read, without such a length as soon as more has come. Puma would put all
    # of it on the disk before anybody could look at it, and this version of it knows no limit.
    module BoundedBodies
      ANSWER = "HTTP/1.1 413 Payload Too Large\r\nConnection: close\r\nContent-Length: 0\r\n\r\n"
      MOST_BYTES = BrowserChecks::MOST_BYTES

      # For every connection that this process takes.
      def self.put_in_force
        expected = %i[setup_body write_chunk]
        missing = expected.reject { |name| Puma::Client.private_method_defined?(name) }
        raise "Puma #{Puma::Const::PUMA_VERSION} reads bodies in another way" unless missing.empty?

        Puma::Client.prepend(self)
      end

      private

      def setup_body
        refuse_body if env["CONTENT_LENGTH"].to_i > MOST_BYTES
        super
      end

      def write_chunk(bytes)
        refuse_body if @chunked_content_length + bytes.bytesize > MOST_BYTES
        super
      end

      # Puma closes the connection then, without a word of its own.
      def refuse_body
        EventLog.write("refused", reason: "length", source: peerip, method: env["REQUEST_METHOD"])
        io << ANSWER
        raise Puma::ConnectionError, "the body is too long"
      end
    end
  end
end
