# frozen_string_literal: true

module VistaroWeb
  # Checks names and passwords.
  class Login
    # `kind` is :accepted, with the user, or :refused or :throttled, without.
    Outcome = Struct.new(:kind, :user)

    # Allows the account with user id 0, which may read everything, to log in.
    ROOT_SETTING = "rootLoginAllowed"

    # How long each answer takes, at least: it must not tell whether there is such an account.
    # `wait` is given the seconds left.
    def initialize(minimum_seconds: 1.0, wait: ->(seconds) { sleep seconds })
      @minimum_seconds = minimum_seconds
      @wait = wait
    end

    # Checks the password of the account from the address `source`.
    def attempt(name, password, _source)
      start = Process.clock_gettime(Process::CLOCK_MONOTONIC)
      user = check(name, password)
      left = @minimum_seconds - (Process.clock_gettime(Process::CLOCK_MONOTONIC) - start)
      @wait.call(left) if left.positive?
      user ? Outcome.new(:accepted, user) : Outcome.new(:refused)
    end

    private

    def check(name, password)
      Library.enter do
        found = VistaroRuby::VTUser.userWithName(name, password: password)
        found if found && (!found.uid.zero? || root_allowed?)
      end
    end

    def root_allowed?
      VistaroRuby::VTSettings.sharedInstance.valueForUndefinedKey(ROOT_SETTING) == true
    end
  end
end
