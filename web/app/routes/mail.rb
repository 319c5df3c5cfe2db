# frozen_string_literal: true

require_relative "../item"
require_relative "../mail/address"
require_relative "../mail/jobs"
require_relative "../mail/letter"

module VistaroWeb
  module Routes
    # Sending a file by mail, and how that went.
    module Mail
      # What hosts commonly take is 25 MB of message, which Base64 makes a third longer than the file.
      MOST_BYTES = 18_000_000
      MOST_CHARACTERS = 10_000
      FIELDS = %w[to subject text].freeze

      def self.registered(app)
        app.set :mail_jobs, VistaroWeb::Mail::Jobs.new
        app.helpers Helpers

        app.get "/item/:id/mail" do
          require_login
          name = with_item { |item| item.emailable? ? item.name : halt(404) }
          mail_form(name, { "subject" => name_text(name) }, nil)
        end

        app.post "/item/:id/mail" do
          require_login
          require_form_token
          name, type, content, host, sender = mailed_item
          problem, recipients = mail_problem(content)
          halt 422, mail_form(name, typed_mail, problem) if problem

          letter = letter_of(host, sender, recipients)
          letter.attach(name, content, type)
          begin_mail(host, letter, recipients, [name]) do
            halt 429, mail_form(name, typed_mail, "too_many")
          end
        end

        app.get "/mail/:job" do
          require_login
          job = settings.mail_jobs.find(params["job"], session_of_visitor.uid) or halt 404
          next part(:"mail/state", job: job) if params["part"] == "state"

          page :"mail/job", job: job
        end
      end

      # What the routes need besides.
      module Helpers
        # Begins to send the letter and shows how it goes. The block answers when the user sends too
        # much.
        def begin_mail(host, letter, recipients, names, test: false)
          log = method(:log_event)
          job = settings.mail_jobs.begin(host, letter.to_s, owner: session_of_visitor.uid, test: test,
                                         recipients: recipients, names: names) do |ended|
            log.call("mail_#{ended.state}", recipients: ended.recipients, names: ended.names,
                                            reason: ended.reason, answer: ended.answer)
          end
          redirect "/mail/#{job.id}", 303
        rescue VistaroWeb::Mail::Jobs::TooMany
          yield
        end

        def mail_form(name, values, problem)
          fields = { "to" => "", "text" => "" }.merge(values)
          page :"mail/form", name: name, id: params["id"], fields: fields, problem: problem
        end

        # Whoever asks is shown what the host said only when there is something to do about it.
        def host_answer(job)
          job.answer if administrator?
        end

        private

        def typed_mail
          Mail::FIELDS.to_h { |name| [name, field(name)] }
        end

        # Name, type and content of the item of the address, read with the visitor's rights; content is
        # nil when it is too long. Besides the host that mail goes to, and who sends it.
        def mailed_item
          name, type, file, *rest = with_item do |item|
            host = VistaroWeb::Mail::Host.configured
            halt 404 unless item.emailable? && host
            [item.name, item.mime_type, item.open_file || halt(404), host,
             user.fullname || session_of_visitor.username]
          end
          [name, type, file.read(Mail::MOST_BYTES), *rest]
        ensure
          file&.close
        end

        # The end of the key of a text for what is wrong with the form, and the recipients.
        def mail_problem(content)
          recipients = VistaroWeb::Mail::Address.list(field("to"))
          problem = if content.nil? then "too_long"
                    elsif recipients.nil? then "wrong_recipients"
                    elsif field("subject").match?(/[[:cntrl:]]/) then "odd_subject"
                    elsif Mail::FIELDS.any? do |name|
                            field(name).length > Mail::MOST_CHARACTERS
                          end then "long_text"
                    end
          [problem, recipients]
        end

        def letter_of(host, sender, recipients)
          VistaroWeb::Mail::Letter.new(sender: host.sender, on_behalf_of: sender, recipients: recipients,
                                       subject: field("subject"), text: field("text"))
        end
      end
    end
  end
end
