# frozen_string_literal: true

require "base64"
require "openssl"
require "socket"

# A mail host that takes everything and keeps it, for tests: plain, by STARTTLS or encrypted from the
# first byte, with a login or without. Its certificate is its own; `certificate` is the PEM to trust.
#
# As a program: `ruby smtp_sink.rb FOLDER [tls|starttls|plain] [NAME PASSWORD]` prints its port, writes
# the certificate to FOLDER/certificate.pem and each message to FOLDER/message-N.eml, until it is ended.
class SMTPSink
  # `from` and `to` are those of the envelope, `login` is the name that logged in or nil, `encrypted`
  # whether the message came over an encrypted connection.
  Message = Struct.new(:from, :to, :data, :login, :encrypted, keyword_init: true)

  attr_reader :port, :messages, :certificate

  # `login` is [name, password]; `host` what the certificate is made out to; `refuse` a command that is
  # answered with an error. The block is given each message.
  def initialize(mode, login: nil, host: "127.0.0.1", refuse: nil, &taken)
    @mode = mode
    @login = login
    @refuse = refuse
    @taken = taken
    @messages = Thread::Queue.new
    make_certificate(host)
    @server = TCPServer.new("127.0.0.1", 0)
    @port = @server.addr[1]
    @thread = Thread.new { loop { serve(@server.accept) } }
    @thread.report_on_exception = false
  end

  def stop
    @thread.kill
    @server.close
  end

  private

  def make_certificate(host)
    key = OpenSSL::PKey::EC.generate("prime256v1")
    made = OpenSSL::X509::Certificate.new
    made.version = 2
    made.serial = 1
    made.subject = made.issuer = OpenSSL::X509::Name.parse("/CN=#{host}")
    made.public_key = key
    made.not_before = Time.now - 60
    made.not_after = Time.now + 3600
    factory = OpenSSL::X509::ExtensionFactory.new(made, made)
    made.add_extension(factory.create_extension("basicConstraints", "CA:TRUE", true))
    kind = host.match?(/\A[\d.]+\z/) ? "IP" : "DNS"
    made.add_extension(factory.create_extension("subjectAltName", "#{kind}:#{host}"))
    made.sign(key, OpenSSL::Digest.new("SHA256"))
    @certificate = made.to_pem
    @context = OpenSSL::SSL::SSLContext.new
    @context.add_certificate(made, key)
  end

  def encrypt(socket)
    OpenSSL::SSL::SSLSocket.new(socket, @context).tap do |encrypted|
      encrypted.sync_close = true
      encrypted.accept
    end
  end

  def serve(socket)
    Thread.new do
      socket = encrypt(socket) if @mode == :tls
      converse(socket)
    rescue SystemCallError, IOError, OpenSSL::SSL::SSLError
      nil # the other side went away, or does not trust us
    ensure
      socket.close
    end
  end

  # One line after the other, until the other side goes; the socket becomes another one when it is
  # encrypted.
  def converse(socket)
    say(socket, "220 sink")
    message = new_message(socket, nil)
    while (line = socket.gets("\r\n")&.chomp("\r\n"))
      verb = line[/\A\w+/].to_s.upcase
      next say(socket, "554 refused") if verb == @refuse
      return say(socket, "221 bye") if verb == "QUIT"

      if verb == "STARTTLS"
        say(socket, "220 go on")
        socket = encrypt(socket)
      else
        answer(socket, message, verb, line)
      end
      message = new_message(socket, message.login) if %w[STARTTLS DATA].include?(verb)
    end
  end

  def answer(socket, message, verb, line)
    case verb
    when "EHLO" then greet(socket)
    when "AUTH" then message.login = log_in(socket, line)
    when "MAIL" then mail_from(socket, message, line)
    when "RCPT"
      message.to << line[/<([^>]*)>/, 1]
      say(socket, "250 fine")
    when "DATA" then take(socket, message)
    else say(socket, "250 fine")
    end
  end

  def greet(socket)
    encrypted = socket.is_a?(OpenSSL::SSL::SSLSocket)
    offers = ["sink"]
    offers << "STARTTLS" if @mode == :starttls && !encrypted
    offers << "AUTH LOGIN PLAIN" if @login && encrypted
    offers.each_with_index do |offer, index|
      say(socket, "250#{index == offers.size - 1 ? ' ' : '-'}#{offer}")
    end
  end

  def log_in(socket, line)
    given = Base64.decode64(line[/\AAUTH PLAIN (\S+)/, 1].to_s).split("\0")[1, 2]
    return say(socket, "535 wrong name or password") unless @login && given == @login

    say(socket, "235 welcome")
    given.first
  end

  def mail_from(socket, message, line)
    return say(socket, "530 log in first") if @login && message.login.nil?

    message.from = line[/<([^>]*)>/, 1]
    say(socket, "250 fine")
  end

  def take(socket, message)
    say(socket, "354 go on")
    message.data = +""
    until (line = socket.gets("\r\n")) == ".\r\n"
      message.data << line.delete_prefix(".")
    end
    say(socket, "250 taken")
    @messages << message
    @taken&.call(message)
  end

  def new_message(socket, login)
    Message.new(to: [], login: login, encrypted: socket.is_a?(OpenSSL::SSL::SSLSocket))
  end

  # Nil, so that it can be the answer of a refused login.
  def say(socket, line)
    socket.write("#{line}\r\n")
    nil
  end
end

if $PROGRAM_NAME == __FILE__
  folder, mode, *login = ARGV
  count = 0
  sink = SMTPSink.new((mode || "plain").to_sym, login: (login unless login.empty?)) do |message|
    count += 1
    File.binwrite(File.join(folder, "part"), message.data)
    File.rename(File.join(folder, "part"), File.join(folder, "message-#{count}.eml"))
  end
  File.write(File.join(folder, "certificate.pem"), sink.certificate)
  puts sink.port
  $stdout.flush
  sleep
end
