# frozen_string_literal: true

require_relative "item_ids"

module VistaroWeb
  # What the server knows of somebody who is logged in.
  class Session
    attr_reader :user, :username, :began, :item_ids
    attr_accessor :last_used

    # Counts the user as logged in until finish().
    def initialize(user, now)
      @user = user
      @began = @last_used = now
      @item_ids = ItemIds.new
      Library.enter do
        @username = user.username
        user.login
      end
    end

    def administrator?
      Library.enter { user.administrator }
    end

    # Idempotent.
    def finish
      Library.enter { user.logout }
    end
  end
end
