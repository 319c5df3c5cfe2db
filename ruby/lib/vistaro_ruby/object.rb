# frozen_string_literal: true

module VistaroRuby
  # What every object of the library can do.
  class VTObject
    # Calls the block with the key and :will before, :did after each change of the property `key`.
    # The observation goes on until it is cancelled or the object is gone, whether or not the answer,
    # an Observation, is kept. A block that refers to the object keeps it alive until then.
    #
    # What the block raises is raised by the call that made the change, once that is complete.
    def observe(key, &block)
      raise ArgumentError, "observe needs a block" unless block

      Observation.new(start_observation(key, block))
    end

    def inspect
      title = respond_to?(:title) ? " #{self.title.inspect}" : ""
      "#<#{self.class}#{title}>"
    rescue StandardError
      "#<#{self.class}>"
    end
  end

  # A running observation.
  class Observation
    def initialize(number)
      @number = number
    end

    # Ends it; harmless when it has ended.
    def cancel
      VistaroRuby.end_observation(@number)
    end
  end
end
