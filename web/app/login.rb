# frozen_string_literal: true

require_relative "security/login_throttle"

module VistaroWeb
  # Checks names and passwords, and finds the account of those who need none.
  class Login
    # `kind` is :accepted, with the user, or :refused or :throttled, without.
    Outcome = Struct.new(:kind, :user)

    # Global settings: whether the account with user id 0, which may read everything, may log in, and
    # as whom everybody searches when nobody has to log in.
    ROOT_SETTING = "rootLoginAllowed"
    ANONYMOUS_SETTING = "anonymousUserName"
    ANONYMOUS_NAME = "nobody"

    # Nobody's name is longer, and a log should hold what was tried.
    LONGEST_NAME = 256
    # What is checked at the same time; each waits out its time in a thread of the server.
    MOST_AT_ONCE = 6

    # How long each answer takes, at least: it must not tell whether there is such an account.
    # `wait` is given the seconds left.
    def initialize(minimum_seconds: 1.0, throttle: Security::LoginThrottle.new,
                   wait: ->(seconds) { sleep seconds })
      @minimum_seconds = minimum_seconds
      @throttle = throttle
      @wait = wait
      @places = Thread::SizedQueue.new(MOST_AT_ONCE)
    end

    # Checks the password of the account from the address `source`. One attempt too many is answered
    # at once, and the password is not looked at.
    def attempt(name, password, source)
      return Outcome.new(:refused) if name.empty? || name.bytesize > LONGEST_NAME
      return Outcome.new(:throttled) unless @throttle.admit?(name, source) && take_place

      begin
        user = slowly { check(name, password) }
      ensure
        @places.pop
      end
      @throttle.succeeded(name, source) if user
      user ? Outcome.new(:accepted, user) : Outcome.new(:refused)
    end

    # Whether nobody has to log in.
    def anonymous?
      Library.enter { truth(VistaroRuby::VTSettings.sharedInstance.userAuthenticationDisabled) }
    end

    # The account as which everybody searches, when the settings say so; nil when people have to log
    # in, there is no such account, or it is one that may read everything.
    def anonymous_user
      Library.enter do
        next unless anonymous?

        name = VistaroRuby::VTSettings.sharedInstance.valueForUndefinedKey(ANONYMOUS_SETTING)
        user = VistaroRuby::VTUser.userWithName(name.is_a?(String) && !name.empty? ? name : ANONYMOUS_NAME)
        user unless user.nil? || user.uid.zero?
      end
    end

    # The account of the session as it is now: its groups and rights may have changed. Nil when it is
    # gone, belongs to somebody else now, or was closed meanwhile.
    def account_again(session)
      Library.enter do
        again = VistaroRuby::VTUser.userWithName(session.username)
        next if again.nil? || again.uid != session.uid || !allowed?(again)

        again unless session.was_open? && !again.accountIsOpen
      end
    end

    private

    def take_place
      @places.push(true, true)
    rescue ThreadError
      false
    end

    def slowly
      start = Process.clock_gettime(Process::CLOCK_MONOTONIC)
      answer = yield
      left = @minimum_seconds - (Process.clock_gettime(Process::CLOCK_MONOTONIC) - start)
      @wait.call(left) if left.positive?
      answer
    end

    # The password outside of the library: the system may take seconds to look at it.
    def check(name, password)
      return if name.include?("\0") || password.include?("\0")
      return unless VistaroRuby::VTUser.passwordIsRight(password, forName: name)

      Library.enter do
        user = VistaroRuby::VTUser.userWithName(name)
        user if user && allowed?(user)
      end
    end

    def allowed?(user)
      !user.uid.zero? || truth(VistaroRuby::VTSettings.sharedInstance.valueForUndefinedKey(ROOT_SETTING))
    end

    # As settings hold a boolean: itself, a number or a text.
    def truth(value)
      case value
      when String then %w[1 true yes].include?(value.downcase)
      when Numeric then !value.zero?
      else value == true
      end
    end
  end
end
