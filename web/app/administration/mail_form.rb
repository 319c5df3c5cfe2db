# frozen_string_literal: true

require_relative "form"
require_relative "../mail/address"

module VistaroWeb
  module Administration
    # How mail is sent.
    class MailForm < Form
      HOST = /\A[A-Za-z0-9]([A-Za-z0-9.-]{0,251}[A-Za-z0-9])?\z|\A[0-9A-Fa-f:]+\z/

      # What mail needs, and what is said when it is missing.
      NEEDED = { "smtpServerAddress" => "no_mail_host", "smtpFromEmailAddress" => "no_sender" }.freeze

      setting "mailEnabled", :flag
      setting "smtpFromEmailAddress", :text, pattern: Mail::Address::PATTERN
      setting "smtpServerAddress", :text, pattern: HOST
      setting "smtpDefaultServerPort", :flag
      setting "smtpCustomServerPort", :port
      setting "smtpUseSSL", :flag
      setting "smtpServerAuthenticationMode", :number
      setting "smtpServerUsername", :text, pattern: /\A[^[:cntrl:]]{1,200}\z/
      setting "smtpServerPassword", :secret

      private

      def problem_together
        missing_for_mail || missing_port || login_in_clear
      end

      def missing_for_mail
        NEEDED.find { |name, _| value(name).empty? }&.last if on?("mailEnabled")
      end

      def missing_port
        "no_mail_port" if !on?("smtpDefaultServerPort") && value("smtpCustomServerPort").empty?
      end

      def login_in_clear
        "login_in_clear" unless value("smtpServerUsername").empty? || on?("smtpUseSSL")
      end
    end
  end
end
