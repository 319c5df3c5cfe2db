# frozen_string_literal: true

require "openssl"
require "securerandom"
require_relative "session"

module VistaroWeb
  # Who is logged in. The browser holds 256 random bits; everything else is here, under a digest of
  # them, and gone when the server ends.
  class Sessions
    IDLE_SECONDS = 30 * 60
    ABSOLUTE_SECONDS = 12 * 60 * 60
    # Anybody may begin one when nobody has to log in, so their number is bounded: the one that has
    # been idle longest goes.
    MOST = 5_000

    # `clock` gives seconds; tests move it.
    def initialize(clock: -> { Process.clock_gettime(Process::CLOCK_MONOTONIC) })
      @clock = clock
      @lock = Mutex.new
      @sessions = {} # digest of the id => Session, the least recently used one first
    end

    # Begins one for the user; gives its id, to be told to nobody but the browser, and the session.
    def begin_for(user, anonymous: false)
      id = SecureRandom.urlsafe_base64(32)
      session = Session.new(user, now, anonymous: anonymous)
      ended = @lock.synchronize do
        @sessions[digest(id)] = session
        @sessions.size > MOST ? [@sessions.shift.last] : []
      end
      ended.each(&:finish)
      [id, session]
    end

    # The session with this id; nil when there is none, or it is over.
    def find(id)
      return unless id

      key = digest(id)
      now = self.now
      session = @lock.synchronize do
        found = @sessions.delete(key)
        @sessions[key] = found if found && !over?(found, now)
        found
      end
      return if session.nil?

      if over?(session, now)
        session.finish
        return
      end
      session.last_used = now
      session
    end

    # The seconds by which sessions are counted.
    def now
      @clock.call
    end

    # Ends the session with this id, if there is one.
    def finish(id)
      session = @lock.synchronize { @sessions.delete(digest(id)) } if id
      session&.finish
    end

    # Ends those that are over; to be called now and then.
    def sweep
      now = self.now
      ended = @lock.synchronize do
        over = @sessions.select { |_, session| over?(session, now) }
        over.each_key { |key| @sessions.delete(key) }
        over.values
      end
      ended.each(&:finish)
    end

    def count
      @lock.synchronize { @sessions.size }
    end

    private

    def over?(session, now)
      now - session.last_used > IDLE_SECONDS || now - session.began > ABSOLUTE_SECONDS
    end

    def digest(id)
      OpenSSL::Digest::SHA256.digest(id)
    end
  end
end
