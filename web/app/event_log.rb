# frozen_string_literal: true

require "json"
require "time"

module VistaroWeb
  # What happens, one JSON object a line: when, what, and what belongs to it. Never a password, and
  # never a byte that a terminal would obey.
  module EventLog
    @lock = Mutex.new
    @output = $stdout

    class << self
      # An IO, or anything with `write` and `flush`.
      attr_accessor :output

      # `event` is a short name such as "login_refused"; of the details those that are nil are left
      # out.
      def write(event, **details)
        entry = { time: Time.now.utc.iso8601(3), event: event }.merge(details.compact)
        line = "#{JSON.generate(printable(entry), ascii_only: true)}\n".gsub("\x7f", "\\u007f")
        @lock.synchronize do
          output.write(line)
          output.flush
        end
      end

      private

      def printable(value)
        case value
        when String then value.dup.force_encoding(Encoding::UTF_8).scrub
        when Hash then value.to_h { |key, inner| [printable(key.to_s), printable(inner)] }
        when Array then value.map { |inner| printable(inner) }
        else value
        end
      end
    end
  end
end
