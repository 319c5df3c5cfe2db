# frozen_string_literal: true

module VistaroWeb
  # Lets the library see to what has happened outside, and ends sessions that are over, once a second
  # for as long as one serves.
  module EventPump
    INTERVAL = 1

    def self.start
      @thread = Thread.new { loop { pump } } unless @thread&.alive?
    end

    def self.pump
      sleep INTERVAL
      Library.enter { VistaroRuby.processEvents }
      Application.store.sweep
    rescue StandardError => e
      EventLog.write("event_pump_failed", error: e.class.name, text: e.message)
    end
    private_class_method :pump
  end
end
