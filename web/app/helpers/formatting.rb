# frozen_string_literal: true

require_relative "../attribute_titles"
require_relative "../type_names"

module VistaroWeb
  # How values are shown.
  module Formatting
    UNITS = %w[kB MB GB TB PB].freeze

    # 1536000 as "1.5 MB", in thousands, as file managers have it.
    def size_text(bytes)
      return "" unless bytes
      return t("common.bytes", count: bytes) if bytes < 1000

      amount = bytes.to_f
      unit = UNITS.find { (amount /= 1000) < 999.5 } || UNITS.last
      number = amount < 9.95 ? format("%.1f", amount) : amount.round.to_s
      number = number.tr(".", ",") if language == "de"
      "#{number} #{unit}"
    end

    # The day, and for today and yesterday the time instead.
    def date_text(time)
      return "" unless time

      time = time.localtime
      days = (Date.today - time.to_date).to_i
      clock = time.strftime("%H:%M")
      return t("common.today", time: clock) if days.zero?
      return t("common.yesterday", time: clock) if days == 1

      time.strftime(t("common.date_format"))
    end

    # A time that something took.
    def seconds_text(seconds)
      text = format("%.3f", seconds)
      language == "de" ? text.tr(".", ",") : text
    end

    def number_text(number)
      Text.number(language, number)
    end

    # The title of a kind in the visitor's language; as it is when it is none of those that ship.
    def kind_name(title)
      t("kinds.#{title.downcase.tr(' ', '_')}")
    rescue KeyError
      title
    end

    # The name of an attribute in the visitor's language.
    def attribute_name(title)
      AttributeTitles.in(language, title)
    end

    # The value of a fact of a file of these types.
    def fact_text(fact, types)
      return size_text(fact.value) if fact.size?

      (TypeNames.in(language, types) if fact.type?) || value_text(fact.value)
    end

    # A name as it can be shown: bytes that are not UTF-8 become U+FFFD, and control characters,
    # which could turn the text around them, their pictures.
    def name_text(name)
      return name if name.is_a?(String) && name.ascii_only? && !name.match?(/[\x00-\x1f\x7f]/)

      name.to_s.dup.force_encoding(Encoding::UTF_8).scrub("\u{FFFD}")
          .gsub(/[\u0000-\u001f\u007f-\u009f\u202a-\u202e\u2066-\u2069]/, "\u{FFFD}")
    end

    # A value of the library as a page shows it.
    def value_text(value)
      case value
      when true, false then t("common.#{value}")
      when Time then value.localtime.strftime(t("common.time_format"))
      when Integer then number_text(value)
      when Float then value.round(3).to_s.delete_suffix(".0")
      when Array then value.map { |part| value_text(part) }.join(", ")
      else name_text(value)
      end
    end

    # The address of a file of `public`, which changes when the file does.
    def asset_path(name)
      settings.assets.address_of(name)
    end
  end
end
