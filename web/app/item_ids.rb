# frozen_string_literal: true

require "openssl"
require "securerandom"

module VistaroWeb
  # The names by which one session's pages speak of files: an address holds no path. The same path
  # has the same id for as long as the session lasts, and another one in every other session.
  class ItemIds
    # About a hundred pages of results. The path that was longest not asked for is forgotten.
    MOST = 10_000

    def initialize
      @key = SecureRandom.bytes(32)
      @paths = {}
      @lock = Mutex.new
    end

    # The id of the path, which is bytes.
    def id_of(path)
      id = [OpenSSL::HMAC.digest("SHA256", @key, path)[0, 16]].pack("m0").tr("+/", "-_").delete("=")
      @lock.synchronize do
        @paths.delete(id)
        @paths[id] = path
        @paths.shift if @paths.size > MOST
      end
      id
    end

    # The path that a page of this session called so; nil for any other id.
    def path_of(id)
      @lock.synchronize do
        path = @paths.delete(id)
        path && (@paths[id] = path)
      end
    end
  end
end
