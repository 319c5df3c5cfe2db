# frozen_string_literal: true

require_relative "../administration/folder_rows"
require_relative "../administration/folder_tree"
require_relative "../administration/mail_form"
require_relative "../administration/server_form"
require_relative "../administration/status"
require_relative "../settings_change"

module VistaroWeb
  module Routes
    # What administrators alone may see and change.
    module Administration
      # The pages that change settings by a form: their form and what is said of it.
      FORMS = { "server" => VistaroWeb::Administration::ServerForm,
                "mail" => VistaroWeb::Administration::MailForm }.freeze

      def self.registered(app)
        app.helpers Helpers

        get(app, "/admin") { page :"administration/status", status: VistaroWeb::Administration::Status.now }

        FORMS.each do |name, form|
          get(app, "/admin/#{name}") { settings_page(name, Library.enter { form.stored }, nil) }
          post(app, "/admin/#{name}") { change_by_form(name, form) }
        end

        post(app, "/admin/mail/test") { send_test }
      end

      # A page for administrators alone. Each route is guarded by itself: a filter for all of them would
      # have to know every way in which an address can be written.
      def self.get(app, path, &work)
        app.get(path) do
          require_administrator
          instance_exec(&work)
        end
      end

      # The same for a change, which needs a form of ours besides.
      def self.post(app, path, &work)
        app.post(path) do
          require_administrator
          require_form_token
          instance_exec(&work)
        end
      end

      # What the routes need besides.
      module Helpers
        def restart_necessary?
          Library.enter { VistaroRuby::VTSettings.sharedInstance.serverRestartNecessary }
        end

        private

        def change_by_form(name, form)
          typed = form.typed { |setting| field(setting) }
          problem = typed.problem&.then { |reason| "administration.#{reason}" }
          problem ||= change_settings { |settings| typed.store(settings) }
          halt 422, settings_page(name, typed, problem) if problem

          log_event("settings_changed", page: name)
          redirect "/admin/#{name}?done=saved", 303
        end

        def settings_page(name, form, problem)
          page :"administration/#{name}", form: form, problem: problem, done: params["done"] == "saved",
                                          password_set: password_set?
        end

        def password_set?
          Library.enter { !VistaroRuby::VTSettings.sharedInstance.smtpServerPassword.nil? }
        end

        # To the address in the form, with the settings as they are stored.
        def send_test
          host = Library.enter { VistaroWeb::Mail::Host.configured }
          recipients = VistaroWeb::Mail::Address.list(field("to"))
          problem = if host.nil? then "mail_not_ready"
                    elsif recipients.nil? then "wrong_recipient"
                    end
          halt 422, mail_page("administration.#{problem}") if problem

          letter = VistaroWeb::Mail::Letter.new(sender: host.sender, on_behalf_of: "Vistaro",
                                                recipients: recipients, text: t("administration.test_text"),
                                                subject: t("administration.test_subject"))
          begin_mail(host, letter, recipients, [], test: true) { halt 429, mail_page("mail.too_many") }
        end

        def mail_page(problem)
          settings_page("mail", Library.enter { VistaroWeb::Administration::MailForm.stored }, problem)
        end
      end
    end
  end
end
