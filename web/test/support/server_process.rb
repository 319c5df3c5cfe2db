# frozen_string_literal: true

require "net/http"
require "socket"
require "timeout"

# For tests that ask the server, a process of its own, over the network. `@port` is where it listens,
# `@said` what it has written.
module ServerProcess
  SERVER = File.expand_path("../../server.rb", __dir__)
  SECONDS = 20

  # Starts it with the settings as they are, and gives its process id once it listens.
  def start(expected: "listening")
    @port = TCPServer.open("127.0.0.1", 0) { |server| server.addr[1] }
    libraries = $LOAD_PATH.flat_map { |path| ["-I", path] }
    reader, writer = IO.pipe
    @pid = Process.spawn({ "VISTARO_ROOT" => @root }, RbConfig.ruby, *libraries, SERVER,
                         "--bind", "127.0.0.1", "--port", @port.to_s, %i[out err] => writer)
    writer.close
    @output = reader
    wait_for(expected)
  end

  def wait_for(text)
    @said ||= +""
    deadline = Process.clock_gettime(Process::CLOCK_MONOTONIC) + SECONDS
    until @said.include?(text)
      left = deadline - Process.clock_gettime(Process::CLOCK_MONOTONIC)
      flunk "no #{text} in:\n#{@said}" unless left.positive? && @output.wait_readable(left)
      @said << @output.readpartial(65_536)
    end
  rescue EOFError
    flunk "no #{text} in:\n#{@said}"
  end

  def teardown
    if @pid
      Process.kill("TERM", @pid)
      Process.wait(@pid)
    end
  rescue Errno::ESRCH, Errno::ECHILD
    nil
  ensure
    super
  end

  def fetch(tls: nil, path: "/login")
    http = Net::HTTP.new("localhost", @port)
    http.use_ssl = !tls.nil?
    if tls
      http.ca_file = tls
      http.verify_mode = OpenSSL::SSL::VERIFY_PEER
    end
    http.get(path)
  end
end
