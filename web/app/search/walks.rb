# frozen_string_literal: true

require_relative "results"
require_relative "walk"
require_relative "../security/running_limit"

module VistaroWeb
  module Search
    # The searches that walk the files at this moment. Each takes a processor, and keeps a thread of
    # the server waiting: so they are few.
    class Walks
      # Raised for a search whose results nobody wants any more.
      class Outdated < StandardError
      end

      MOST = 4
      MOST_OF_ONE_USER = 2
      # For a whole one, and for a place: where somebody types, the walk before is just being ended.
      SECONDS = 30
      SECONDS_FOR_A_PLACE = 1

      def initialize(seconds: SECONDS, seconds_for_a_place: SECONDS_FOR_A_PLACE)
        @seconds = seconds
        @seconds_for_a_place = seconds_for_a_place
        @lock = Mutex.new
        @left = ConditionVariable.new
        @running = {} # walk => id of the user
        @newest = {} # who asks again and again => walk
      end

      # The Results of what is asked for on behalf of the user of the session; a Problem of them says
      # that it took too long. `of`, if it is
      # given, is who wants only the last answer: the walk that they had running is ended. The block
      # tells whether whoever asks is gone. Raises Outdated; Security::RunningLimit::Exceeded when there
      # is no place, and Walk::Ended when something went wrong.
      def results(asked, session, of: nil, &gone)
        walk = Walk.new(asked, session, @seconds)
        replace(of, walk)
        take_place(walk, session.uid)
        walk.results(&gone).tap { count }
      rescue Walk::Ended => e
        raise Outdated if e.reason == :outdated
        raise if e.reason == :failed

        Results.none(Problem.new(kind: "time"))
      ensure
        leave(of, walk)
      end

      # Ends all of them.
      def stop
        @lock.synchronize { @running.keys }.each(&:outdate)
      end

      def running
        @lock.synchronize { @running.size }
      end

      private

      def replace(who, walk)
        @lock.synchronize { who && @newest[who].tap { @newest[who] = walk } }&.outdate
      end

      def take_place(walk, uid)
        deadline = now + @seconds_for_a_place
        @lock.synchronize do
          while full?(uid)
            left = deadline - now
            raise Security::RunningLimit::Exceeded if left <= 0

            @left.wait(@lock, left)
          end
          @running[walk] = uid
        end
      end

      def full?(uid)
        @running.size >= MOST || @running.each_value.count(uid) >= MOST_OF_ONE_USER
      end

      def leave(who, walk)
        @lock.synchronize do
          @running.delete(walk)
          @newest.delete(who) if @newest[who].equal?(walk)
          @left.broadcast
        end
      end

      # The other process has counted it where nobody sees that.
      def count
        Library.enter do
          settings = VistaroRuby::VTSettings.sharedInstance
          settings.setValue(settings.searchCount + 1, forKey: "searchCount")
        end
      end

      def now
        Process.clock_gettime(Process::CLOCK_MONOTONIC)
      end
    end
  end
end
