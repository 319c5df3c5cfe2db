# frozen_string_literal: true

require "rbconfig"

module VistaroWeb
  module Search
    # A search that walks the files, in a process of its own: so it keeps nobody from the library, and
    # can be ended at any moment. The process has what this one was started with, not what it has
    # become: it opens settings and files by itself, and acts for the user as every search does.
    class Walk
      # There are no results; `reason` is :time (it took too long), :outdated (nobody waits for them)
      # or :failed.
      class Ended < StandardError
        attr_reader :reason

        def initialize(reason)
          @reason = reason
          super("the search was ended: #{reason}")
        end
      end

      PROGRAM = File.expand_path("../../walk.rb", __dir__)
      # How often it is looked whether somebody still waits, in seconds.
      LOOK = 0.1
      # Of the process, in bytes: enough for the hits of ten million files.
      MOST_MEMORY = 2 << 30

      # On behalf of the user of the session.
      def initialize(request, session, seconds)
        @question = Marshal.dump([request, session.username, session.uid])
        @deadline = now + seconds
        @lock = Mutex.new
      end

      # The Results. The block tells whether nobody waits for them any more. Raises Ended.
      def results(&gone)
        run { |answers| wait_for(answers, &gone) }
      end

      # Has the one who waits for results() raise Ended, :outdated.
      def outdate
        @outdated = true
        kill
      end

      private

      def run
        questions, question = IO.pipe
        answer, answers = IO.pipe
        @lock.synchronize { @pid = start(questions, answers) }
        [questions, answers].each(&:close)
        write_question(question)
        yield answer
      ensure
        [questions, question, answer, answers].each { |pipe| pipe&.close }
        finish
      end

      # Ruby's own files need not be looked for: they are where ours are.
      def start(questions, answers)
        Process.spawn(RbConfig.ruby, "--disable=gems,did_you_mean,error_highlight",
                      *library_folders.flat_map { |folder| ["-I", folder] }, PROGRAM,
                      in: questions, out: answers, rlimit_data: MOST_MEMORY)
      end

      def library_folders
        $LOADED_FEATURES.grep(%r{/VistaroRuby\.(?:rb|so)\z}).map { |file| File.dirname(file) }
      end

      # It is smaller than a pipe, so nobody has to read it yet.
      def write_question(pipe)
        pipe.binmode.write(@question)
        pipe.close
      rescue Errno::EPIPE
        nil # it has ended already: there will be no answer
      end

      def wait_for(pipe)
        bytes = "".b
        until (chunk = pipe.read_nonblock(1 << 16, exception: false)).nil?
          chunk == :wait_readable ? pipe.wait_readable(LOOK) : bytes << chunk
          raise Ended, :outdated if @outdated || yield
          raise Ended, :time if now > @deadline
        end
        answer_in(bytes)
      end

      # What our own program wrote. Nothing, when it was ended or could not go on.
      def answer_in(bytes)
        raise Ended, @outdated ? :outdated : :failed if bytes.empty?

        Marshal.load(bytes) || raise(Ended, :time) # rubocop:disable Security/MarshalLoad -- see above
      end

      def kill
        @lock.synchronize { Process.kill("KILL", @pid) if @pid }
      rescue Errno::ESRCH
        nil
      end

      # Until it is waited for, no other process can have its id.
      def finish
        kill
        @lock.synchronize do
          Process.wait(@pid) if @pid
          @pid = nil
        end
      end

      def now
        Process.clock_gettime(Process::CLOCK_MONOTONIC)
      end
    end
  end
end
