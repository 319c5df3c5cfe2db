# frozen_string_literal: true

require "optparse"
require "puma"
require "puma/server"
require "puma/minissl"
require_relative "boot"
require_relative "certificate"
require_relative "security/bounded_bodies"

module VistaroWeb
  # The application behind Puma, in one process, since the library is in one.
  class Server
    THREADS = 16

    # Reads the options of the command line; exits with a message when they are wrong.
    def initialize(arguments)
      @address = "0.0.0.0"
      @port = nil
      OptionParser.new do |options|
        options.on("--bind ADDRESS", "where to listen; 0.0.0.0 if not given") { |text| @address = text }
        options.on("--port N", Integer, "the port; else that of the settings") { |number| @port = number }
      end.parse!(arguments)
    rescue OptionParser::ParseError => e
      abort "vistaro-web: #{e.message}"
    end

    def run
      port, certificate = Library.enter do
        settings = VistaroRuby::VTSettings.sharedInstance
        [@port || settings.serverPort, (Certificate.path(settings) if wants_tls?(settings))]
      end
      Security::BoundedBodies.put_in_force
      server = Puma::Server.new(Application, Puma::Events.null, { min_threads: 2, max_threads: THREADS })
      listen(server, port, certificate)
      VistaroWeb.boot
      obey_signals(server)
      EventLog.write("listening", address: @address, port: port, tls: !certificate.nil?)
      server.run.join
      EventLog.write("stopped")
    rescue Certificate::Unusable => e
      abort "vistaro-web: #{e.message}"
    end

    private

    def wants_tls?(settings)
      [true, 1, "1"].include?(settings.sslEnabled)
    end

    def listen(server, port, certificate)
      return server.add_tcp_listener(@address, port) unless certificate

      server.add_ssl_listener(@address, port, tls_context(certificate))
    rescue SystemCallError => e
      abort "vistaro-web: cannot listen on #{@address} port #{port}: #{e.message}"
    end

    def tls_context(certificate)
      context = Puma::MiniSSL::Context.new
      context.key = context.cert = certificate
      context.no_tlsv1_1 = true # and older ones: 1.2 at least
      context
    end

    # What a signal asks for takes locks, which its handler must not: a thread does it.
    def obey_signals(server)
      signals = Thread::Queue.new
      %w[HUP INT TERM].each { |name| Signal.trap(name) { signals << name } }
      Thread.new do
        reload while signals.pop == "HUP"
        Application.walks.stop
        server.stop
      end
    end

    def reload
      Library.enter { VistaroRuby::VTSettings.sharedInstance.reloadConfig }
      EventLog.write("settings_reloaded")
    end
  end
end
