# frozen_string_literal: true

require "ipaddr"

module VistaroWeb
  module Security
    # Bounds how often passwords can be guessed. After a few failures an account, and an address, has
    # to wait before each further attempt: twice as long each time, half a minute at most, so that
    # nobody can lock others out for longer. An address from which an account has logged in before
    # does not wait for what others do to that account.
    class LoginThrottle
      FREE_FAILURES = 5
      # An address may stand for a whole office.
      FREE_FAILURES_OF_SOURCE = 15
      LONGEST_WAIT = 30
      # After so long without a failure all is forgotten.
      MEMORY_SECONDS = 15 * 60
      # Names and addresses are made up by whoever guesses: the oldest are forgotten.
      MOST = 20_000

      Failures = Struct.new(:number, :last) do
        def wait_after(free)
          number < free ? 0 : [2**(number - free), LONGEST_WAIT].min
        end
      end

      def initialize(clock: -> { Process.clock_gettime(Process::CLOCK_MONOTONIC) })
        @clock = clock
        @lock = Mutex.new
        @failures = {}
        @known = {}
      end

      # Whether the password may be looked at. When it may, the attempt counts as failed from now on,
      # so that many at once do not slip through; succeeded() takes that back.
      def admit?(account, source)
        keys = keys_for(account, source)
        now = @clock.call
        @lock.synchronize do
          next false if keys.any? { |key, free| blocked?(key, free, now) }

          keys.each_key { |key| count(key, now) }
          true
        end
      end

      # The password was right. The address keeps its failures with other accounts, or somebody with
      # an account could guess the passwords of others for as long as they like.
      def succeeded(account, source)
        @lock.synchronize do
          account_key, source_key = keys_for(account, source).keys
          @failures.delete(account_key)
          @failures[source_key].number -= 1 if @failures.key?(source_key)
          remember(@known, [account, network_of(source)], true)
        end
      end

      private

      # What has to wait, and how many failures it has for nothing.
      def keys_for(account, source)
        network = network_of(source)
        whose = @known.key?([account, network]) ? [:account_from, account, network] : [:account, account]
        { whose => FREE_FAILURES, [:source, network] => FREE_FAILURES_OF_SOURCE }
      end

      def blocked?(key, free, now)
        failures = @failures[key]
        return false unless failures
        return @failures.delete(key) && false if now - failures.last > MEMORY_SECONDS

        now - failures.last < failures.wait_after(free)
      end

      def count(key, now)
        failures = @failures.delete(key) || Failures.new(0, now)
        failures.number += 1
        failures.last = now
        remember(@failures, key, failures)
      end

      def remember(table, key, value)
        table.delete(key)
        table[key] = value
        table.shift if table.size > MOST
      end

      # Whoever has one address of IPv6 has all of its network.
      def network_of(source)
        address = IPAddr.new(source)
        address.ipv6? && !address.ipv4_mapped? ? address.mask(64).to_s : address.native.to_s
      rescue IPAddr::Error
        "unknown"
      end
    end
  end
end
