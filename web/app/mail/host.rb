# frozen_string_literal: true

require "net/smtp"
require "openssl"

module VistaroWeb
  module Mail
    # The host that takes our mail, as the settings name it.
    class Host
      # Mail was not taken; `reason` is :unreachable, :encryption, :login or :refused, `answer` what the
      # host said.
      class Failed < StandardError
        attr_reader :reason, :answer

        def initialize(reason, error)
          @reason = reason
          @answer = error.message.dup.force_encoding(Encoding::UTF_8).scrub.gsub(/[[:cntrl:]]+/, " ").strip
          super("#{reason}: #{@answer}")
        end
      end

      SECONDS = 20
      # In the order of our liking; all are used over encrypted connections only.
      LOGINS = { plain: "PLAIN", login: "LOGIN", cram_md5: "CRAM-MD5" }.freeze
      REASONS = {
        Net::SMTPAuthenticationError => :login, Net::SMTPUnsupportedCommand => :encryption,
        OpenSSL::SSL::SSLError => :encryption, Net::ProtocolError => :refused,
        SystemCallError => :unreachable, SocketError => :unreachable, IOError => :unreachable,
        Timeout::Error => :unreachable
      }.freeze

      attr_reader :sender

      # The host in force; nil when mail is not switched on or something it needs is missing. To be
      # called with the library entered.
      def self.configured
        settings = VistaroRuby::VTSettings.sharedInstance
        return unless settings.mailingConfiguredAndEnabled

        new(address: settings.smtpServerAddress.to_s, port: settings.smtpServerPort,
            sender: settings.smtpFromEmailAddress.to_s, encryption: encryption_in(settings),
            name: settings.smtpServerUsername.to_s, password: settings.smtpServerPassword.to_s)
      end

      # Encrypted from the first byte (:tls) unless the mode asks for it to begin on a plain connection
      # (:starttls), as the ports 465 and 587 have it.
      def self.encryption_in(settings)
        return unless [true, 1, "1"].include?(settings.smtpUseSSL)

        settings.smtpServerAuthenticationMode.to_i.zero? ? :tls : :starttls
      end
      private_class_method :encryption_in

      def initialize(address:, port:, sender:, encryption:, name:, password:)
        @address = address
        @port = port
        @sender = sender
        @encryption = encryption
        @name = name
        @password = password
      end

      # Hands over the message, a text in the format of mail, for these addresses. Raises Failed.
      def deliver(message, recipients)
        connection.start(Socket.gethostname) do |smtp|
          log_in(smtp) unless @name.empty?
          smtp.send_message(message, @sender, *recipients)
        end
      rescue *REASONS.keys => e
        raise Failed.new(REASONS.find { |kind, _| e.is_a?(kind) }.last, e)
      end

      private

      def connection
        smtp = Net::SMTP.new(@address, @port)
        smtp.disable_starttls
        smtp.enable_tls(trust) if @encryption == :tls
        smtp.enable_starttls(trust) if @encryption == :starttls
        smtp.open_timeout = smtp.read_timeout = SECONDS
        smtp
      end

      # Trusts who the system trusts at this moment; Ruby's own list is as it was when Ruby started.
      def trust
        context = OpenSSL::SSL::SSLContext.new
        context.set_params(cert_store: OpenSSL::X509::Store.new.tap(&:set_default_paths))
        context
      end

      def log_in(smtp)
        raise Net::SMTPAuthenticationError.new(nil, message: "No login without encryption") unless @encryption

        way = LOGINS.find { |_, name| smtp.capable_auth_types.include?(name) } || LOGINS.first
        smtp.authenticate(@name, @password, way.first)
      end
    end
  end
end
