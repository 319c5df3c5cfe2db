# frozen_string_literal: true

require "minitest/autorun"
require "fileutils"
require "io/wait"
require "net/http"
require "open3"
require "socket"
require "tmpdir"

# script/server, run as somebody runs it who sees this tree for the first time.
class ServerScriptTest < Minitest::Test
  SCRIPT = File.expand_path("../../script/server", __dir__)
  SECONDS = 90

  def setup
    @folder = Dir.mktmpdir("vistaro-")
    File.chmod(0o755, @folder)
    @environment = { "VISTARO_VAR" => File.join(@folder, "var"), "VISTARO_ROOT" => nil }
  end

  def teardown
    stop("TERM") if @process
    FileUtils.rm_rf(@folder)
  end

  def test_prints_what_it_does
    output, status = run_script("--help")
    assert_predicate status, :success?
    assert_includes output, "script/server [options] [DIR…]"
    assert_includes output, "--port N"
  end

  def test_refuses_what_it_cannot_do
    refusals = { ["--fast"] => "There is no option --fast", ["--port", "70000"] => "no port",
                 ["--port"] => "no port", ["--demo", "/tmp"] => "searches its own files alone" }
    refusals.each do |arguments, text|
      output, status = run_script(*arguments)
      assert_equal 2, status.exitstatus, arguments.inspect
      assert_includes output, text
    end
    output, status = run_script(File.join(@folder, "missing"))
    assert_equal 3, status.exitstatus
    assert_includes output, "is no folder"
  end

  def test_says_that_its_port_is_taken
    taken = TCPServer.new("127.0.0.1", 0)
    output, status = run_script("--demo", "--port", taken.addr[1].to_s)
    assert_equal 3, status.exitstatus
    assert_includes output, "Port #{taken.addr[1]} is taken by another program"
  ensure
    taken.close
  end

  def test_demonstrates_to_two_accounts_until_interrupted
    skip_unless_root
    printed = start("--demo")
    accounts = printed.scan(/user name (\w+), password (\w+)/).to_h
    assert_equal %w[administrator guest], accounts.keys
    accounts.each { |name, password| assert log_in(name, password), "#{name} cannot log in" }
    refute log_in("guest", accounts["administrator"])
    assert_equal "127.0.0.1", listening_address
    programs = children
    assert_equal 2, programs.size
    assert_equal 0, stop("INT").exitstatus
    programs.each { |pid| assert_raises(Errno::ESRCH, "process #{pid} is left") { Process.kill(0, pid) } }
  end

  def test_gives_the_demonstration_new_passwords_and_the_same_files
    skip_unless_root
    first = start("--demo")
    pictures = picture_times
    stop("TERM")
    refute_equal first[/guest, password \w+/], start("--demo")[/guest, password \w+/]
    refute_empty pictures
    assert_equal pictures, picture_times
  end

  def test_searches_the_folders_named
    skip_unless_root
    root = @environment["VISTARO_ROOT"] = File.join(@folder, "root")
    ["etc", "tmp", "Library/Application Support", "Library/Caches", "var/lib/vistaro"].each do |name|
      FileUtils.mkdir_p(File.join(root, name))
    end
    File.write(File.join(root, "etc/passwd"), "ann:x:61301:61301:Ann:/:/bin/false\n")
    File.write(File.join(root, "etc/group"), "ann:x:61301:\n")
    hash = "secret".crypt("$6$rounds=1000$salt$")
    File.write(File.join(root, "etc/shadow"), "ann:#{hash}:19000:0:99999:7:::\n")
    FileUtils.mkdir_p(File.join(@folder, "files"))
    File.write(File.join(@folder, "files/wanted.txt"), "x")
    start("files")
    assert log_in("ann", "secret")
    assert_includes get("/search?q=wanted").body, "wanted.txt"
    stop("TERM")
    start(File.join(@folder, "files"))
    settings = File.read(Dir[File.join(root, "Library/**/Settings.plist")].first)
    assert_equal 1, settings.scan("<string>files</string>").size
  end

  private

  # When each was last made or changed in any way.
  def picture_times
    Dir[File.join(@folder, "var/demo/tree/**/*.jpg")].to_h { |path| [path, File.stat(path).ctime] }
  end

  def skip_unless_root
    skip "needs root: only root can give files away" unless Process.uid.zero?
  end

  def run_script(*arguments)
    Open3.capture2e(@environment, SCRIPT, *arguments)
  end

  # Starts the server on a free port, in a process group of its own as a terminal would; the answer is
  # what it prints until it serves.
  def start(*arguments)
    @port = TCPServer.open("127.0.0.1", 0) { |server| server.addr[1] }
    @output, writer = IO.pipe
    @process = Process.spawn(@environment, SCRIPT, *arguments, "--port", @port.to_s,
                             out: writer, err: writer, in: :close, pgroup: true, chdir: @folder)
    writer.close
    printed = +""
    deadline = Process.clock_gettime(Process::CLOCK_MONOTONIC) + SECONDS
    until printed.include?("Ctrl-C")
      flunk printed unless @output.wait_readable(deadline - Process.clock_gettime(Process::CLOCK_MONOTONIC))
      printed << @output.readpartial(4096)
    end
    printed
  rescue EOFError
    flunk "ended: #{printed}"
  end

  # Signals the whole group, as Ctrl-C does, and waits for the script's end.
  def stop(signal)
    Process.kill(signal, -@process)
    Process.wait2(@process).last
  rescue Errno::ESRCH
    Process.wait2(@process).last
  ensure
    @process = nil
  end

  def children
    File.read("/proc/#{@process}/task/#{@process}/children").split.map(&:to_i)
  end

  # Where the port is listened on, as the kernel has it.
  def listening_address
    lines = File.readlines("/proc/net/tcp").map(&:split)
    found = lines.find { |line| line[1].end_with?(format(":%04X", @port)) && line[3] == "0A" }
    [found[1][0, 8]].pack("H*").reverse.unpack("C4").join(".")
  end

  def http(request)
    request["Cookie"] = @cookie if @cookie
    answer = Net::HTTP.start("127.0.0.1", @port) { |connection| connection.request(request) }
    @cookie = answer["Set-Cookie"][/\A[^;]+/] if answer["Set-Cookie"]
    answer
  end

  def get(path)
    http(Net::HTTP::Get.new(path))
  end

  def log_in(name, password)
    @cookie = nil
    token = get("/login").body[/name="token" value="([0-9a-f]+)"/, 1]
    request = Net::HTTP::Post.new("/login")
    request.set_form_data("token" => token, "name" => name, "password" => password)
    http(request).code == "303"
  end
end
