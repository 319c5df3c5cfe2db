# frozen_string_literal: true

module VistaroWeb
  module Security
    # Bounds how much of one kind runs for one user at a time, so that nobody keeps others waiting.
    class RunningLimit
      # Raised for what is one too many.
      class Exceeded < StandardError
      end

      def initialize(most)
        @most = most
        @running = Hash.new(0)
        @lock = Mutex.new
      end

      # Runs the block and gives its answer. Raises Exceeded when as many as may be run already for
      # `whom`.
      def run(whom)
        enter(whom)
        begin
          yield
        ensure
          leave(whom)
        end
      end

      private

      def enter(whom)
        @lock.synchronize do
          raise Exceeded if @running[whom] >= @most

          @running[whom] += 1
        end
      end

      def leave(whom)
        @lock.synchronize do
          @running[whom] -= 1
          @running.delete(whom) if @running[whom].zero?
        end
      end
    end
  end
end
