# frozen_string_literal: true

require "mail"

module VistaroWeb
  module Mail
    # A message with files, as text in the format of mail. Whatever stands in a name or a line of the
    # form, no header can come of it.
    class Letter
      CONTROLS = /[[:cntrl:]\u2028\u2029]+/

      # `sender` is the address of the server, `on_behalf_of` the name of the person.
      def initialize(sender:, on_behalf_of:, recipients:, subject:, text:)
        @message = ::Mail.new(charset: "UTF-8")
        from = ::Mail::Address.new(sender)
        from.display_name = one_line(on_behalf_of)
        @message.from = from.format
        @message.to = recipients
        @message.subject = one_line(subject)
        @message.text_part = ::Mail::Part.new
        @message.text_part.content_type = "text/plain; charset=UTF-8"
        @message.text_part.body = text.gsub(/\r\n?/, "\n")
      end

      # `bytes` are the content of the file called `name`.
      def attach(name, bytes, mime_type)
        name = one_line(name).tr("/\\", "_").gsub('"', "'")
        encoded = [bytes].pack("m").gsub("\n", "\r\n")
        @message.attachments[name] = { mime_type: mime_type || "application/octet-stream",
                                       encoding: "base64", content: encoded }
      end

      def to_s
        @message.to_s
      end

      private

      # Without what could end a line, and without bytes that are no text.
      def one_line(text)
        text.dup.force_encoding(Encoding::UTF_8).scrub("_").gsub(CONTROLS, "_").strip
      end
    end
  end
end
