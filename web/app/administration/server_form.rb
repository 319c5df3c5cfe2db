# frozen_string_literal: true

require_relative "form"
require_relative "../certificate"

module VistaroWeb
  module Administration
    # Name, port and encryption of the server, and whether one has to log in.
    class ServerForm < Form
      NAME = /\A[A-Za-z0-9]([A-Za-z0-9.-]{0,251}[A-Za-z0-9])?\z/

      setting "serverName", :text, pattern: NAME
      setting "serverPort", :port
      setting "userAuthenticationDisabled", :flag
      setting "sslEnabled", :flag
      setting "useSSLTestCertificate", :flag
      setting "sslCertificatePath", :text, pattern: %r{\A/[^[:cntrl:]]+\z}

      setting Security::HostNames::EXTRA_SETTING, :texts, pattern: NAME
      setting Security::Forwarding::SETTING, :addresses

      private

      def problem_together
        return unless on?("sslEnabled") && !on?("useSSLTestCertificate")

        Certificate.checked(value("sslCertificatePath"))
        nil
      rescue Certificate::Unusable
        "no_certificate"
      end
    end
  end
end
