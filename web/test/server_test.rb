# frozen_string_literal: true

require_relative "test_helper"
require "net/http"
require "openssl"
require "socket"
require "timeout"
require_relative "../app/certificate"

# The server as a process of its own, asked over the network.
class ServerTest < WebTest
  SERVER = File.expand_path("../server.rb", __dir__)
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

  def test_serves_and_ends_cleanly
    start
    assert_equal "200", fetch.code
    Process.kill("TERM", @pid)
    _, outcome = Process.wait2(@pid)
    @pid = nil
    assert_equal 0, outcome.exitstatus
  end

  def test_reads_the_settings_anew
    start
    assert_equal "200", fetch(path: "/login").code
    settings.userAuthenticationDisabled = true
    Process.kill("HUP", @pid)
    wait_for("settings_reloaded")
    assert_equal "200", fetch(path: "/search").code
  end

  def test_searches_go_on_while_a_file_is_sent
    write("large.bin", "x" * 50_000_000)
    searched = folder
    searched.download = 1
    settings.searchFolders = [searched]
    settings.userAuthenticationDisabled = true
    start
    page = fetch(path: "/search?q=large")
    cookie = page["Set-Cookie"][/\A[^;]+/]
    TCPSocket.open("localhost", @port) do |socket|
      socket.write("GET #{page.body[%r{/item/[\w-]+}]}/download HTTP/1.1\r\nHost: localhost\r\n" \
                   "Cookie: #{cookie}\r\n\r\n")
      assert_includes socket.readpartial(100), "200 OK" # and no more of it: the server waits to send
      Timeout.timeout(SECONDS) { assert_equal "200", fetch(path: "/search?q=large").code }
    end
  end

  def test_serves_tls_with_a_certificate_that_it_makes
    settings.sslEnabled = true
    settings.useSSLTestCertificate = true
    start
    certificate = File.join(@root, "Library/Application Support/Vistaro/TestCertificate.pem")
    assert_equal 0o600, File.stat(certificate).mode & 0o777
    answer = fetch(tls: certificate)
    assert_equal "200", answer.code
    assert_match(/\A__Host-vistaro=.*secure/i, answer["Set-Cookie"])
  end

  def test_serves_tls_with_a_certificate_of_ones_own
    pem = File.join(@folder, "own.pem")
    VistaroWeb::Certificate.send(:make, pem, "files.example.org")
    settings.sslEnabled = true
    settings.sslCertificatePath = pem
    start
    assert_equal "200", fetch(tls: pem).code
  end

  def test_speaks_no_old_tls
    settings.sslEnabled = true
    settings.useSSLTestCertificate = true
    start
    context = OpenSSL::SSL::SSLContext.new
    context.min_version = context.max_version = OpenSSL::SSL::TLS1_1_VERSION
    context.security_level = 0
    assert_raises(OpenSSL::SSL::SSLError, Errno::ECONNRESET) do
      TCPSocket.open("localhost", @port) { |socket| OpenSSL::SSL::SSLSocket.new(socket, context).connect }
    end
  end

  def test_says_what_is_wrong_with_a_certificate
    settings.sslEnabled = true
    settings.sslCertificatePath = File.join(@folder, "missing.pem")
    start(expected: "missing.pem")
    _, outcome = Process.wait2(@pid)
    @pid = nil
    assert_equal 1, outcome.exitstatus
    File.write(File.join(@folder, "bad.pem"), "no PEM")
    settings.sslCertificatePath = File.join(@folder, "bad.pem")
    start(expected: "no PEM file")
  end

  def test_says_that_the_port_is_taken
    start
    first = @pid
    said = IO.popen({ "VISTARO_ROOT" => @root },
                    [RbConfig.ruby, *$LOAD_PATH.flat_map do |path|
                                      ["-I", path]
                                    end, SERVER, "--bind", "127.0.0.1",
                     "--port", @port.to_s, { err: %i[child out] }], &:read)
    assert_includes said, "cannot listen on 127.0.0.1 port #{@port}"
    assert_equal "200", fetch.code
    assert_equal first, @pid
  end
end
