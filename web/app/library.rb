# frozen_string_literal: true

require "monitor"

module VistaroWeb
  # The one door to the library, which takes one caller at a time. Whoever is in may call as often as
  # need be; what takes long and needs no library, such as sending a file, is done outside.
  module Library
    @door = Monitor.new

    # Runs the block with the library to itself and gives its answer.
    def self.enter(&)
      @door.synchronize(&)
    end
  end
end
