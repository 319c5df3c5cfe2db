# frozen_string_literal: true

require_relative "test_helper"
require_relative "support/server_process"
require_relative "../app/certificate"

# The server behind nginx, set up as the documentation has it, which speaks TLS to the visitor.
class ProxyTest < WebTest
  include ServerProcess

  DOCUMENTATION = File.expand_path("../../docs/web.md", __dir__)

  def setup
    super
    searched = folder
    searched.download = 1
    settings.searchFolders = [searched]
    settings.setValue(["127.0.0.1"], forKey: "webProxyAddresses")
    settings.setValue(["files.example.org"], forKey: "webHostNames")
    start
    start_proxy
  end

  def teardown
    Process.kill("TERM", @proxy)
    Process.wait(@proxy)
    super
  end

  def test_logs_in_finds_and_downloads
    content = Random.new(3).bytes(200_000)
    write("plan.bin", content)
    log_in_through_the_proxy
    assert_match(/\A__Host-vistaro=[\w-]{43}\z/, @cookie)
    page = ask("/search?q=plan").body
    assert_includes page, "plan.bin"
    address = page[%r{/item/[\w-]{22}}]
    assert_equal content, ask("#{address}/download").body
    part = ask("#{address}/download", "Range" => "bytes=5-9")
    assert_equal ["206", content[5..9]], [part.code, part.body]
  end

  def test_tells_where_a_request_came_from_whatever_that_claims
    log_in_through_the_proxy("X-Forwarded-For" => "203.0.113.9", "X-Real-IP" => "203.0.113.9")
    wait_for("login_accepted")
    login = @said.lines.grep(/login_accepted/).map { |line| JSON.parse(line) }.first
    assert_equal "127.0.0.2", login["source"]
  end

  def test_takes_no_form_of_another_site_and_no_other_name
    assert_equal "403", submit("Origin" => "https://evil.example.org").code
    assert_equal "421", ask("/login", "Host" => "evil.example.org").code
    assert_equal "200", ask("/login", "Host" => "files.example.org").code
  end

  private

  # The block of the documentation, in the least that nginx needs around it.
  def configuration
    location = File.read(DOCUMENTATION)[%r{^ +location / \{.*?^ +\}$}m] or flunk "nothing in #{DOCUMENTATION}"
    certificate = File.join(@folder, "proxy.pem")
    VistaroWeb::Certificate.send(:make, certificate, "files.example.org")
    paths = %w[client_body proxy fastcgi uwsgi scgi].map { |name| "#{name}_temp_path #{@folder}/#{name};" }
    <<~NGINX
      daemon off; master_process off; pid #{@folder}/nginx.pid; error_log stderr;
      events {}
      http {
        access_log off; #{paths.join(' ')}
        server {
          listen 127.0.0.1:#{@proxy_port} ssl;
          ssl_certificate #{certificate}; ssl_certificate_key #{certificate};
      #{location.gsub('127.0.0.1:9000', "127.0.0.1:#{@port}")}
        }
      }
    NGINX
  end

  def start_proxy
    @proxy_port = TCPServer.open("127.0.0.1", 0) { |server| server.addr[1] }
    file = File.join(@folder, "nginx.conf")
    File.write(file, configuration)
    @proxy = Process.spawn("nginx", "-e", "stderr", "-p", @folder, "-c", file,
                           %i[out err] => File.join(@folder, "nginx.log"))
    Timeout.timeout(SECONDS) { Thread.pass until listens? }
  end

  def listens?
    TCPSocket.open("127.0.0.1", @proxy_port).close
    true
  rescue Errno::ECONNREFUSED
    Process.wait(@proxy, Process::WNOHANG) && flunk(File.read(File.join(@folder, "nginx.log")))
    false
  end

  # From another address than the proxy's own.
  def visitor
    http = Net::HTTP.new("127.0.0.1", @proxy_port)
    http.local_host = "127.0.0.2"
    http.use_ssl = true
    http.verify_mode = OpenSSL::SSL::VERIFY_NONE # of a certificate for another name
    http
  end

  def ask(path, headers = {})
    visitor.get(path, { "Host" => "files.example.org:#{@proxy_port}", "Cookie" => @cookie.to_s, **headers })
  end

  def submit(headers)
    page = ask("/login")
    @cookie = page["Set-Cookie"][/\A[^;]+/]
    form = { "token" => page.body[/name="token" value="(\h+)"/, 1], "name" => "ann", "password" => "annann" }
    host = "files.example.org:#{@proxy_port}"
    visitor.post("/login", URI.encode_www_form(form),
                 { "Host" => host, "Origin" => "https://#{host}", "Cookie" => @cookie, **headers })
  end

  def log_in_through_the_proxy(headers = {})
    answer = submit(headers)
    assert_equal "303", answer.code
    assert_includes answer["Set-Cookie"].downcase, "secure"
    @cookie = answer["Set-Cookie"][/\A[^;]+/]
  end
end
