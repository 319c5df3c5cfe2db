# frozen_string_literal: true

module VistaroWeb
  # The header by which a file is offered under its own name (RFC 6266): in ASCII for old browsers,
  # and in full.
  module ContentDisposition
    # What may stand unescaped in an extended value (RFC 8187).
    PLAIN = /[^A-Za-z0-9!$&+.^_`|~#-]/n

    UNFIT = %r{[\u0000-\u001f\u007f-\u009f/\\]}
    TURNING_AROUND = /[\u200e\u200f\u202a-\u202e\u2066-\u2069]/

    # `name` is bytes. Nothing in it can end the header or the quotes, or turn it into a path.
    def self.attachment(name)
      text = name.dup.force_encoding(Encoding::UTF_8).scrub("_").gsub(UNFIT, "_").gsub(TURNING_AROUND, "")
      text = "file" if text.delete(". ").empty?
      plain = text.unicode_normalize(:nfkd).encode(Encoding::US_ASCII, invalid: :replace, undef: :replace,
                                                                       replace: "_")
      %(attachment; filename="#{plain.gsub(/["%;]/, '_')}"; filename*=UTF-8''#{extended(text)})
    end

    def self.extended(text)
      text.b.gsub(PLAIN) { |byte| format("%%%02X", byte.ord) }
    end
    private_class_method :extended
  end
end
