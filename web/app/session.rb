# frozen_string_literal: true

require_relative "item_ids"

module VistaroWeb
  # What the server knows of somebody who is logged in, or who need not be.
  class Session
    # Rights and groups of an account that change show after this long at most.
    RECHECK_SECONDS = 10

    attr_reader :user, :username, :uid, :began, :item_ids
    attr_accessor :last_used

    # Counts the user as logged in until finish().
    def initialize(user, now, anonymous: false)
      @began = @last_used = @checked = now
      @anonymous = anonymous
      @item_ids = ItemIds.new
      @lock = Mutex.new
      Library.enter do
        @username = user.username
        @uid = user.uid
        @was_open = user.accountIsOpen
        take(user)
      end
    end

    # Whether the account was one that may log in when the session began. Where the password is kept
    # elsewhere, the system may always have called it closed.
    def was_open?
      @was_open
    end

    # Whether nobody logged in: everybody is the same one then.
    def anonymous?
      @anonymous
    end

    # Nobody that has not logged in is one, whatever the account.
    def administrator?
      !anonymous? && Library.enter { user.administrator }
    end

    # Lets the block say who the user is by now, unless it was asked only just before: an account, or
    # nil when it may not be logged in any more. Gives whether the session goes on.
    def still_allowed?(now)
      due = @lock.synchronize do
        next false if now - @checked < RECHECK_SECONDS

        @checked = now
        true
      end
      return true unless due

      again = yield
      Library.enter { take(again) } if again
      !again.nil?
    end

    # Idempotent.
    def finish
      Library.enter { user.logout }
    end

    private

    # The new one is counted before the old one is not.
    def take(user)
      previous = @user
      user.login
      @user = user
      previous&.logout
    end
  end
end
