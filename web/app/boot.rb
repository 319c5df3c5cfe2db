# frozen_string_literal: true

require "VistaroRuby"
require_relative "application"

# The web application of the search server.
module VistaroWeb
  # Finishes the startup of the server and gives the application, ready to serve. The answer of the
  # startup is only logged: without a name to announce, the server serves all the same.
  def self.boot
    announced = Library.enter { VistaroRuby::VTSettings.sharedInstance.finishStartupOfServer }
    EventLog.write("started", announced: announced, pid: Process.pid)
    EventPump.start
    Application
  end
end
