# frozen_string_literal: true

require_relative "test_helper"
require "openssl"
require_relative "support/server_process"
require_relative "../app/certificate"

# The server as a process of its own, asked over the network.
class ServerTest < WebTest
  include ServerProcess

  # The processes that walk for it.
  def walks
    children = Dir["/proc/#{@pid}/task/*/children"].flat_map { |file| File.read(file).split }
    children.select do |child|
      File.read("/proc/#{child}/cmdline").include?("walk.rb")
    rescue Errno::ENOENT, Errno::ESRCH
      false
    end
  end

  def wait_until
    deadline = Process.clock_gettime(Process::CLOCK_MONOTONIC) + SECONDS
    until yield
      flunk "waited in vain" if Process.clock_gettime(Process::CLOCK_MONOTONIC) > deadline
      Thread.pass
    end
  end

  def chunks(number, size)
    "#{size.to_s(16)}\r\nx=#{'x' * (size - 2)}\r\n" * number
  end

  # Of the answer to a form with such a header and body.
  def status_of(header, body)
    TCPSocket.open("localhost", @port) do |socket|
      socket.write("POST /login HTTP/1.1\r\nHost: localhost\r\n" \
                   "Content-Type: application/x-www-form-urlencoded\r\n#{header}\r\n\r\n")
      socket.write(body)
      Timeout.timeout(SECONDS) { socket.gets[/\AHTTP\S+ (\d+)/, 1].to_i }
    end
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

  def test_a_walk_ends_when_its_visitor_goes
    text = write("0.txt", "words that nobody looks for " * 40_000)
    1.upto(2000) { |i| File.link(text, "#{@tree}/#{i}.txt") }
    settings.userAuthenticationDisabled = true
    start
    TCPSocket.open("localhost", @port) do |socket|
      query = URI.encode_www_form_component('kMDItemTextContent == "needle"')
      socket.write("GET /search?q=#{query} HTTP/1.1\r\nHost: localhost\r\n\r\n")
      wait_until { walks.any? }
    end
    wait_until { walks.empty? }
    assert_equal "200", fetch(path: "/search").code
  end

  def test_bodies_that_are_too_long_are_refused_before_they_are_read
    settings.userAuthenticationDisabled = true
    start
    { "Content-Length: 5000000000" => "", "Transfer-Encoding: chunked" => chunks(12, 100_000),
      "Content-Length: 1000001\r\nExpect: 100-continue" => "" }.each do |header, body|
      assert_equal 413, status_of(header, body), header
    end
    assert_equal 403, status_of("Content-Length: 7", "token=x")
    assert_equal 403, status_of("Transfer-Encoding: chunked", "#{chunks(1, 999_000)}0\r\n\r\n")
    wait_for('"reason":"length"')
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
