# frozen_string_literal: true

require "rack/utils"
require_relative "content_disposition"

module VistaroWeb
  # The answer that sends a file: whole, or the one range that was asked for. The library is not
  # needed for it any more.
  class Download
    # `file` is closed once it is sent, or was not wanted.
    def initialize(file, name, mime_type)
      @file = file
      @name = name
      @mime_type = mime_type || "application/octet-stream"
      @size = file.size
    end

    # The Rack response to a request with this environment.
    def response(env)
      ranges = wanted_ranges(env)
      return not_satisfiable if ranges&.empty?

      # Several ranges are allowed to be answered by all of it.
      range = ranges&.size == 1 ? ranges.first : nil
      headers = headers_of(range)
      body = env["REQUEST_METHOD"] == "HEAD" ? closed_body : Body.new(@file, range || (0...@size))
      [range ? 206 : 200, headers, body]
    end

    private

    def wanted_ranges(env)
      return if env["HTTP_IF_RANGE"] && env["HTTP_IF_RANGE"] != etag

      Rack::Utils.get_byte_ranges(env["HTTP_RANGE"], @size)
    end

    def headers_of(range)
      headers = {
        "Content-Type" => @mime_type, "Content-Disposition" => ContentDisposition.attachment(@name),
        "Content-Length" => (range ? range.size : @size).to_s, "Accept-Ranges" => "bytes",
        "ETag" => etag, "Cache-Control" => "private, no-store"
      }
      headers["Content-Range"] = "bytes #{range.begin}-#{range.end}/#{@size}" if range
      headers
    end

    def etag
      @etag ||= %("#{@file.modified.strftime('%s%N').to_i.to_s(36)}-#{@size.to_s(36)}")
    end

    def not_satisfiable
      @file.close
      [416, { "Content-Range" => "bytes */#{@size}", "Content-Type" => "text/plain" }, []]
    end

    def closed_body
      @file.close
      []
    end

    # The bytes of the range, read while they are sent.
    class Body
      def initialize(file, range)
        @file = file
        @range = range
      end

      def each(&)
        @file.each_chunk(@range, &)
      end

      def close
        @file.close
      end
    end
  end
end
