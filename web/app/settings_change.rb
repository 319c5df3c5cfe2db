# frozen_string_literal: true

require_relative "command"
require_relative "library"

module VistaroWeb
  # Changes of the settings file, which the command `vistaro` changes as well: whoever does holds a
  # lock, reads the file anew, changes and writes it, so that nothing is lost of either.
  module SettingsChange
    # The settings were not changed; `reason` is :busy, :damaged or :unwritable.
    class Failed < StandardError
      attr_reader :reason

      def initialize(reason)
        @reason = reason
        super("the settings were not changed: #{reason}")
      end
    end

    LONGEST_WAIT = 5
    PAUSE = 0.02

    class << self
      # Yields the settings with the library entered, saves them, and gives what the block gives. When
      # the block raises, nothing is changed.
      def make(&block)
        with_lock do
          # Status 3: the file is there and cannot be understood. What it holds must not be lost.
          raise Failed, :damaged if Command.run("settings", "list").last == 3

          Library.enter { change(VistaroRuby::VTSettings.sharedInstance, &block) }
        end
      end

      private

      def change(settings)
        restart = settings.serverRestartNecessary
        settings.reloadConfig
        settings.saveSettingsOnChanges = false
        answer = yield settings
        restart ||= settings.serverRestartNecessary
        raise Failed, :unwritable unless settings.saveStorage

        # Saving and reading clear it, though the server is still the one that was started.
        settings.serverRestartNecessary = restart
        answer
      rescue StandardError
        settings.reloadConfig
        settings.serverRestartNecessary = restart
        raise
      ensure
        settings.saveSettingsOnChanges = true
      end

      def with_lock
        path = Library.enter { VistaroRuby::VTSettings.settingsStoragePath } or raise Failed, :unwritable
        flags = File::RDWR | File::CREAT | File::NOFOLLOW | File::NONBLOCK
        File.open("#{path}.lock", flags, 0o600) do |file|
          wait_for(file)
          yield
        end
      rescue SystemCallError
        raise Failed, :unwritable
      end

      def wait_for(file)
        deadline = now + LONGEST_WAIT
        until file.flock(File::LOCK_EX | File::LOCK_NB)
          raise Failed, :busy if now > deadline

          sleep PAUSE
        end
      end

      def now
        Process.clock_gettime(Process::CLOCK_MONOTONIC)
      end
    end
  end
end
