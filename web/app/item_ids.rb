# frozen_string_literal: true

require "openssl"
require "securerandom"

module VistaroWeb
  # The names by which one session's pages speak of files: an address holds no path. The same path
  # has the same id for as long as the session lasts, and another one in every other session.
  class ItemIds
    # What a search told of a file: its path, which is bytes, its content types, the most specific one
    # first, and the title of its kind.
    Hit = Struct.new(:path, :types, :kind)

    # About a hundred pages of results. What was longest not asked for is forgotten.
    MOST = 5_000

    def initialize
      @key = SecureRandom.bytes(32)
      @hits = {}
      @lock = Mutex.new
    end

    # The id of what a search found.
    def id_of(hit)
      digest = OpenSSL::HMAC.digest("SHA256", @key, hit.path)[0, 16]
      id = [digest].pack("m0").tr("+/", "-_").delete("=")
      @lock.synchronize do
        @hits.delete(id)
        @hits[id] = hit
        @hits.shift if @hits.size > MOST
      end
      id
    end

    # What a page of this session called so; nil for any other id.
    def hit_of(id)
      @lock.synchronize do
        hit = @hits.delete(id)
        hit && (@hits[id] = hit)
      end
    end
  end
end
