# frozen_string_literal: true

require "timeout"
require_relative "test_helper"
require_relative "support/smtp_sink"

# Sending files by mail, to a host that keeps what it is given.
class MailTest < WebTest
  NAMES = ["report.txt", "Übersicht der Räume.txt", "دليل.txt", "a\r\nBcc: eve@example.org\r\n\r\nx.txt",
           "quote\"; evil=\"1.txt", "semi;colon, comma.txt", "<b>.txt", "#{'long name ' * 20}.txt"].freeze

  def setup
    super
    @searched = folder
    @searched.download = 1
    settings.searchFolders = [@searched]
    log_in
  end

  def teardown
    @sink&.stop
    ENV.delete("SSL_CERT_FILE")
    super
  end

  def test_sends_the_very_bytes_of_a_file
    start_sink(:plain)
    content = Random.new(1).bytes(70_000)
    write("data.bin", content)
    send_mail("to" => "eve@example.org, bob@example.org", "text" => "Grüße\r\n.\r\nEnd")
    assert_equal :sent, state
    message = received
    assert_equal ["vistaro@example.org", %w[eve@example.org bob@example.org]], [message.from, message.to]
    letter = ::Mail.new(message.data)
    assert_equal "Ann Other", letter[:from].display_names.first
    assert_equal "data.bin", letter.attachments.first.filename
    assert_equal content, letter.attachments.first.decoded
    assert_equal "Grüße\n.\nEnd", letter.text_part.decoded.gsub("\r\n", "\n").strip
  end

  def test_sends_several_files_together
    start_sink(:plain)
    contents = { "one.txt" => "first", "two.bin" => Random.new(2).bytes(5_000), "sub/one.txt" => "other" }
    contents.each { |name, content| write(name, content) }
    ids = selected_ids("one.txt", "two.bin")
    assert_equal 3, ids.size
    get "/mail/new", { "ids" => ids, "from" => "/search?q=one" }
    assert_includes body, 'value="3 files"'
    assert_includes body, 'href="/search?q=one"'
    send_selected(ids)
    assert_equal :sent, state
    letter = ::Mail.new(received.data)
    assert_equal contents.to_a.map { |name, content| [File.basename(name), content] }.sort,
                 letter.attachments.map { |part| [part.filename, part.decoded] }.sort
  end

  def test_leaves_out_what_may_not_be_sent_and_never_sends_less_than_was_shown
    start_sink(:plain)
    %w[one.txt two.txt].each { |name| write(name) }
    FileUtils.mkdir(File.join(@tree, "three.txt"))
    ids = selected_ids("txt")
    get "/mail/new", { "ids" => [*ids, "x" * 22] }
    assert_includes body, "2 of the selected items cannot be sent"
    shown = body.scan(/name="ids\[\]" value="([\w-]{22})"/).flatten
    assert_equal 2, shown.size
    File.chmod(0o600, File.join(@tree, "two.txt"))
    send_selected(shown)
    assert_equal 422, status
    assert_includes body, "Some of the files may not be sent any more"
    refute_includes body, "two.txt"
    get "/mail/new", { "ids" => ["x" * 22] }
    assert_includes body, "Nothing is selected"
    get "/mail/new"
    assert_includes body, "Nothing is selected"
    assert_empty @sink.messages
  end

  def test_takes_no_more_than_so_many_and_so_much_together
    start_sink(:plain)
    21.times { |i| write("few-#{i}.txt", "x") }
    2.times { |i| File.open(write("much-#{i}.bin", ""), "w") { |file| file.truncate(9_500_000) } }
    VTUser.userWithName("ann").resultsPerPage = 50
    { "few" => "No more than 20 files", "much" => "too much for mail" }.each do |word, problem|
      ids = selected_ids(word)
      get "/mail/new", { "ids" => ids }
      assert_includes body, problem
      send_selected(ids)
      assert_equal 422, status
      assert_includes body, problem
    end
    assert_empty @sink.messages
  end

  def test_offers_to_select_only_where_mail_is_ready
    write("one.txt")
    get "/search", { "q" => "one" }
    refute_includes body, "checkbox"
    start_sink(:plain)
    get "/search", { "q" => "one" }
    assert_includes body, 'aria-label="Select one.txt"'
    get "/search", { "q" => "one", "view" => "thumbnails" }
    assert_includes body, 'aria-label="Select one.txt"'
  end

  def test_lets_no_name_of_a_file_become_a_header
    start_sink(:plain)
    NAMES.each do |name|
      FileUtils.rm_f(Dir.glob(File.join(@tree, "*")))
      write(name, "content of it")
      send_mail("subject" => "x")
      letter = ::Mail.new(received.data)
      assert_equal %w[Content-Type Date From Message-ID Mime-Version Subject To],
                   letter.header.fields.map(&:name).uniq.sort - ["Content-Transfer-Encoding"], name.inspect
      assert_equal 1, letter.attachments.size, name.inspect
      assert_equal "content of it", letter.attachments.first.decoded
      expected = name.gsub(/[[:cntrl:]]+/, "_").tr('"', "'")
      assert_equal expected, letter.attachments.first.filename
    end
  end

  def test_lets_no_field_of_the_form_become_a_header
    start_sink(:plain)
    write("report.txt")
    send_mail("subject" => "Hello\r\nBcc: eve@example.org")
    assert_equal 422, status
    many = Array.new(21) { |number| "a#{number}@example.org" }.join(",")
    ["eve@example.org\r\nBcc: bob@example.org", "a@b.c>\r\nDATA", "<eve@example.org>", "eve", "",
     "\"a b\"@c.org", many].each do |to|
      send_mail("to" => to)
      assert_equal 422, status, to
      assert_includes body, 'aria-invalid="true"'
    end
    assert_empty @sink.messages
  end

  def test_logs_in_over_an_encrypted_connection
    { starttls: 1, tls: 0 }.each do |mode, number|
      start_sink(mode, login: %w[sender secret])
      settings.smtpUseSSL = true
      settings.smtpServerAuthenticationMode = number
      settings.smtpServerUsername = "sender"
      settings.smtpServerPassword = "secret"
      write("report.txt", "trusted")
      send_mail
      assert_equal :sent, state
      message = received
      assert_equal ["sender", true], [message.login, message.encrypted], mode
    end
  end

  def test_tells_a_login_that_is_refused
    start_sink(:starttls, login: %w[sender secret])
    settings.smtpUseSSL = true
    settings.smtpServerAuthenticationMode = 1
    settings.smtpServerUsername = "sender"
    settings.smtpServerPassword = "wrong"
    write("report.txt")
    send_mail
    assert_equal :failed, state
    assert_includes body, "refused the login"
    refute_includes body, "535"
  end

  def test_trusts_no_certificate_but_of_the_host
    start_sink(:tls, host: "mail.example.org")
    settings.smtpUseSSL = true
    write("report.txt")
    send_mail
    assert_equal :failed, state
    assert_includes body, "encrypted connection"
    ENV.delete("SSL_CERT_FILE")
    start_sink(:tls, trusted: false)
    send_mail
    assert_equal :failed, state
    assert_empty @sink.messages
  end

  def test_never_sends_a_login_in_clear
    start_sink(:plain, login: %w[sender secret])
    settings.smtpServerUsername = "sender"
    settings.smtpServerPassword = "secret"
    write("report.txt")
    send_mail
    assert_equal :failed, state
    assert_empty @sink.messages
  end

  def test_falls_back_to_no_plain_connection
    start_sink(:plain)
    settings.smtpUseSSL = true
    settings.smtpServerAuthenticationMode = 1
    write("report.txt")
    send_mail
    assert_equal :failed, state
    assert_empty @sink.messages
  end

  def test_tells_a_host_that_refuses_or_is_not_there
    start_sink(:plain, refuse: "RCPT")
    write("report.txt")
    send_mail
    assert_equal :failed, state
    assert_includes body, "The mail host refused the message."
    @sink.stop
    send_mail
    assert_equal :failed, state
    assert_includes body, "cannot be reached"
    @sink = nil
  end

  def test_decides_anew_whether_the_user_may_read_the_file
    start_sink(:plain)
    path = write("report.txt")
    address = address_of_file
    get address
    File.chmod(0o600, path)
    post address, { "token" => token, "to" => "eve@example.org" }
    assert_equal 404, status
    assert_empty @sink.messages
  end

  def test_takes_no_file_that_may_not_be_downloaded
    start_sink(:plain)
    write("report.txt")
    address = address_of_file
    get address
    @searched.download = 0
    post address, { "token" => token, "to" => "eve@example.org" }
    assert_equal 404, status
    assert_empty @sink.messages
  end

  def test_takes_no_file_that_is_too_long
    start_sink(:plain)
    path = write("long.bin")
    File.truncate(path, VistaroWeb::Mail::Selection::MOST_BYTES + 1)
    send_mail
    assert_equal 422, status
    assert_includes body, "too much for mail"
  end

  def test_is_not_offered_until_it_is_configured
    write("report.txt")
    get address_of_file
    assert_equal 404, status
  end

  def test_shows_a_message_to_nobody_but_its_sender
    start_sink(:plain)
    write("report.txt")
    send_mail
    job = last_request.path
    assert_equal :sent, state
    clear_cookies
    log_in("ben")
    get job
    assert_equal 404, status
  end

  def test_is_limited_for_each_user
    clock = 0
    jobs = VistaroWeb::Mail::Jobs.new(clock: -> { clock })
    host = Object.new.tap { |taker| taker.define_singleton_method(:deliver) { |*| nil } }
    send_one = lambda do |owner|
      ended = Thread::Queue.new
      jobs.begin(host, "", owner: owner, recipients: [], names: []) { ended << true }
      ended.pop
    end
    VistaroWeb::Mail::Jobs::MOST_PER_HOUR.times { send_one.call(1) }
    assert_raises(VistaroWeb::Mail::Jobs::TooMany) { send_one.call(1) }
    send_one.call(2)
    clock = 3_601
    send_one.call(1)
  end

  private

  def start_sink(mode, trusted: true, **options)
    @sink&.stop
    @sink = SMTPSink.new(mode, **options)
    certificate = File.join(@folder, "certificate-#{@sink.port}.pem")
    File.write(certificate, @sink.certificate)
    ENV["SSL_CERT_FILE"] = certificate if trusted
    { mailEnabled: true, smtpServerAddress: "127.0.0.1", smtpDefaultServerPort: false,
      smtpCustomServerPort: @sink.port, smtpFromEmailAddress: "vistaro@example.org" }.each do |name, value|
      settings.public_send("#{name}=", value)
    end
  end

  # The address of the form that sends the only file there is.
  def address_of_file
    get "/search", "q" => "kMDItemFSSize >= 0", "kind" => ""
    "#{body[%r{href="(/item/[\w-]+)}, 1]}/mail"
  end

  def send_mail(values = {})
    get address_of_file
    assert_equal 200, status
    post last_request.path, { "token" => token, "to" => "eve@example.org", "subject" => "Hello",
                              "text" => "" }.merge(values)
    follow_redirect! if last_response.redirect?
  end

  # The ids of what a page of results lets one select, for each of the words.
  def selected_ids(*words)
    words.flat_map do |word|
      get "/search", { "q" => word, "kind" => "" }
      body.scan(%r{href="/item/([\w-]{22})}).flatten.uniq
    end.uniq
  end

  def send_selected(ids)
    post "/mail", { "token" => token, "ids" => ids, "to" => "eve@example.org", "subject" => "Hello",
                    "text" => "" }
    follow_redirect! if last_response.redirect?
  end

  # How the message on the last page ended, which that page then shows.
  def state
    100.times do
      get last_request.path
      return :sent if body.include?('class="success"')
      return :failed if body.include?('class="problem"')

      sleep 0.05
    end
    :sending
  end

  def received
    Timeout.timeout(5) { @sink.messages.pop }
  end
end
