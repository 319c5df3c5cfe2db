# frozen_string_literal: true

require_relative "../item"
require_relative "../mail/address"
require_relative "../mail/jobs"
require_relative "../mail/letter"
require_relative "../mail/selection"

module VistaroWeb
  module Routes
    # Sending files by mail, and how that went.
    module Mail
      MOST_CHARACTERS = 10_000
      FIELDS = %w[to subject text].freeze

      def self.registered(app)
        app.set :mail_jobs, VistaroWeb::Mail::Jobs.new
        app.helpers Helpers

        app.get "/item/:id/mail" do
          require_login
          new_message([params["id"]]) { halt 404 }
        end

        app.post "/item/:id/mail" do
          require_login
          require_form_token
          send_message([params["id"]]) { halt 404 }
        end

        app.get "/mail/new" do
          require_login
          new_message(ids_of_items) { |selection| mail_form(selection, {}, "nothing") }
        end

        app.post "/mail" do
          require_login
          require_form_token
          send_message(ids_of_items) { |selection| halt 422, mail_form(selection, typed_mail, "some_gone") }
        end

        app.get "/mail/:job" do
          require_login
          job = settings.mail_jobs.find(params["job"], session_of_visitor.uid) or halt 404
          params["part"] == "state" ? part(:"mail/state", job: job) : page(:"mail/job", job: job)
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

        # Whoever asks is shown what the host said only when there is something to do about it.
        def host_answer(job)
          job.answer if administrator?
        end

        private

        def typed_mail
          Mail::FIELDS.to_h { |name| [name, field(name)] }
        end

        # One more than may be sent, so that it shows when there are more.
        def ids_of_items
          ids = params["ids"]
          ids.is_a?(Array) ? ids.grep(String).uniq.first(VistaroWeb::Mail::Selection::MOST + 1) : []
        end

        # The form for a message with these items. The block answers when none of them may be sent.
        def new_message(ids)
          with_selection(ids) do |selection|
            next yield(selection) if selection.entries.empty?

            mail_form(selection, { "subject" => usual_subject(selection) }, selection_problem(selection))
          end
        end

        # The same for one that was filled in. The block answers when one of them may not be sent any more.
        def send_message(ids)
          with_selection(ids) do |selection|
            yield selection unless selection.complete?

            recipients = VistaroWeb::Mail::Address.list(field("to"))
            letter = letter_with(selection, recipients)
            begin_mail(mail_host, letter, recipients, selection.names) do
              halt 429, mail_form(selection, typed_mail, "too_many")
            end
          end
        end

        # Shows the form again when something is wrong with it.
        def letter_with(selection, recipients)
          refuse = ->(problem) { halt 422, mail_form(selection, typed_mail, problem) }
          problem = selection_problem(selection) || message_problem(recipients)
          refuse.call(problem) if problem

          letter_to(recipients).tap { |letter| selection.attach_to(letter) || refuse.call("too_long") }
        end

        def with_selection(ids, &)
          halt 404 unless mail_host
          VistaroWeb::Mail::Selection.open(session_of_visitor, ids, &)
        end

        # As it is configured at this moment; nil when mail is not.
        def mail_host
          @mail_host ||= Library.enter { VistaroWeb::Mail::Host.configured }
        end

        def mail_form(selection, values, problem)
          fields = { "to" => "", "subject" => "", "text" => "" }.merge(values)
          page :"mail/form", selection: selection, fields: fields, problem: problem, id: params["id"],
                             back: own_target(params["from"], "/search")
        end

        def usual_subject(selection)
          count = selection.entries.size
          count == 1 ? name_text(selection.names.first) : t("mail.several", count: count)
        end

        # The end of the key of a text for what is wrong with what is to be sent, and with the form.
        def selection_problem(selection)
          if selection.entries.size > VistaroWeb::Mail::Selection::MOST then "too_many_files"
          elsif selection.too_long? then "too_long"
          end
        end

        def message_problem(recipients)
          if recipients.nil? then "wrong_recipients"
          elsif field("subject").match?(/[[:cntrl:]]/) then "odd_subject"
          elsif Mail::FIELDS.any? { |name| field(name).length > Mail::MOST_CHARACTERS } then "long_text"
          end
        end

        def letter_to(recipients)
          sender = Library.enter { user.fullname } || session_of_visitor.username
          VistaroWeb::Mail::Letter.new(sender: mail_host.sender, on_behalf_of: sender, recipients: recipients,
                                       subject: field("subject"), text: field("text"))
        end
      end
    end
  end
end
