# frozen_string_literal: true

require "securerandom"
require_relative "host"

module VistaroWeb
  module Mail
    # Messages under way: each is handed over in a thread of its own, and whoever sent it can look how
    # it went.
    class Jobs
      # One message: `state` is :sending, :sent or :failed; then `reason` and `answer` are those of
      # Host::Failed.
      Job = Struct.new(:id, :owner, :recipients, :names, :test, :state, :reason, :answer, keyword_init: true)

      # Raised when a user has as many messages under way as may be, or sent too many this hour.
      class TooMany < StandardError
      end

      MOST_AT_ONCE = 2
      MOST_PER_HOUR = 30
      HOUR = 3_600
      MOST_KEPT = 500

      # `clock` gives seconds; tests move it.
      def initialize(clock: -> { Process.clock_gettime(Process::CLOCK_MONOTONIC) })
        @clock = clock
        @lock = Mutex.new
        @jobs = {}
        @sent = Hash.new { |times, owner| times[owner] = [] }
      end

      # Begins to hand the text of the message over to the host, and gives the job. `owner` is the id of
      # the user; the block is told the job once it has ended.
      def begin(host, message, owner:, recipients:, names:, test: false, &ended)
        job = Job.new(id: SecureRandom.urlsafe_base64(16), owner: owner, recipients: recipients, names: names,
                      test: test, state: :sending)
        @lock.synchronize { admit(job) }
        Thread.new { deliver(job, host, message, &ended) }
        job
      end

      # The user's job with this id; nil when the user has none.
      def find(id, owner)
        @lock.synchronize { @jobs[id] }&.then { |job| job if job.owner == owner }
      end

      private

      def admit(job)
        now = @clock.call
        times = @sent[job.owner]
        times.reject! { |time| now - time > HOUR }
        raise TooMany if times.size >= MOST_PER_HOUR || running(job.owner) >= MOST_AT_ONCE

        times << now
        @jobs[job.id] = job
        forget_one if @jobs.size > MOST_KEPT
      end

      def running(owner)
        @jobs.each_value.count { |job| job.owner == owner && job.state == :sending }
      end

      def forget_one
        ended = @jobs.each_value.find { |job| job.state != :sending }
        @jobs.delete(ended.id) if ended
      end

      def deliver(job, host, message)
        host.deliver(message, job.recipients)
        job.state = :sent
      rescue Host::Failed => e
        job.reason = e.reason
        job.answer = e.answer
        job.state = :failed
      rescue StandardError => e
        EventLog.write("failed", error: e.class.name, text: e.message)
        job.reason = :refused
        job.state = :failed
      ensure
        yield job
      end
    end
  end
end
