# frozen_string_literal: true

require "time"
require_relative "../command"

module VistaroWeb
  module Administration
    # How the server and its index are doing.
    class Status
      # `index` is what Command.index_status gives.
      attr_reader :address, :since, :searches, :users, :index

      def self.now
        new(Command.index_status)
      end

      def initialize(index)
        @index = index
        Library.enter do
          settings = VistaroRuby::VTSettings.sharedInstance
          @address = settings.serverURL.to_s
          @since = settings.startTime
          @searches = settings.totalSearches
          @users = settings.currentParallelUsers
        end
      end

      def fresh?
        index["state"] == "fresh"
      end

      # When what the index holds was read; nil when there is none.
      def read_at
        index["began"] && Time.parse(index["began"])
      end
    end
  end
end
