# frozen_string_literal: true

require "ipaddr"

module VistaroWeb
  module Administration
    # Settings that are changed together, by a form whose fields have their names.
    class Form
      # How one is typed and stored: :text, :secret (never shown; kept when nothing is typed), :port,
      # :number, :flag; :texts and :addresses are lists, typed one to a line.
      Setting = Struct.new(:name, :type, :pattern)
      LISTS = %i[texts addresses].freeze

      # Whether what is typed can be a setting of the type.
      CHECKS = {
        text: ->(text, setting) { text.match?(setting.pattern) },
        texts: ->(text, setting) { elements(text).all?(setting.pattern) },
        addresses: ->(text, _) { elements(text).all? { |element| address(element) } },
        port: ->(text, _) { text.match?(/\A\d{1,5}\z/) && text.to_i.between?(1, 65_535) },
        number: ->(text, _) { text.match?(/\A\d\z/) },
        flag: ->(text, _) { text == "1" },
        secret: ->(text, _) { text.length <= 200 && !text.match?(/[[:cntrl:]]/) }
      }.freeze

      class << self
        def all
          @all ||= []
        end

        # Declares one. A text that is typed, or each of a list, has to match `pattern`; an empty one
        # removes the setting.
        def setting(name, type, pattern: nil)
          all << Setting.new(name, type, pattern)
        end
      end

      # What a list that was typed consists of.
      def self.elements(text)
        text.split(/[\s,]+/).reject(&:empty?).uniq
      end

      # As the server sees the addresses of those who connect; nil for what is none.
      def self.address(text)
        IPAddr.new(text).to_s unless text.include?("/")
      rescue IPAddr::Error
        nil
      end

      # What is in force, with the library entered.
      def self.stored
        settings = VistaroRuby::VTSettings.sharedInstance
        new(all.to_h { |setting| [setting.name, text_of(settings, setting)] })
      end

      # What was typed into the form: the block gives the text of a field. A box that was not ticked is
      # not sent.
      def self.typed
        new(all.to_h { |setting| [setting.name, yield(setting.name)] }, yield("forget") == "1")
      end

      def self.text_of(settings, setting)
        return "" if setting.type == :secret
        return list_text(settings, setting) if LISTS.include?(setting.type)

        value = settings.public_send(setting.name)
        return value && value != 0 ? "1" : "" if setting.type == :flag

        value.to_s
      end

      def self.list_text(settings, setting)
        stored = settings.valueForKey(setting.name)
        stored.is_a?(VistaroRuby::VTArray) ? stored.grep(String).join("\n") : ""
      end
      private_class_method :list_text

      # `values` are texts by name; `forgets_secrets` removes those that nothing is typed for.
      def initialize(values, forgets_secrets = nil)
        @values = values
        @forgets_secrets = forgets_secrets
      end

      def value(name)
        @values.fetch(name)
      end

      # Whether the box is ticked.
      def on?(name)
        value(name) == "1"
      end

      # The name of the first setting that cannot be so, or of what does not go together: the end of the
      # key of a text. Nil when all is well.
      def problem
        wrong = self.class.all.find { |setting| !value(setting.name).empty? && !fits?(setting) }
        wrong ? "wrong_#{wrong.name}" : problem_together
      end

      # Stores what differs from what is in force, so that nothing asks for a restart that needs none.
      # To be called while the settings are being changed.
      def store(settings)
        self.class.all.each do |setting|
          next store_secret(settings, setting) if setting.type == :secret
          next if value(setting.name) == self.class.text_of(settings, setting)

          # By key: not all of them have messages of their own.
          settings.setValue(stored_value(setting), forKey: setting.name)
        end
      end

      private

      # The end of the key of a text for settings that do not go together.
      def problem_together
        nil
      end

      def fits?(setting)
        CHECKS.fetch(setting.type).call(value(setting.name), setting)
      end

      def stored_value(setting)
        text = value(setting.name)
        return text == "1" if setting.type == :flag
        return if text.empty?

        case setting.type
        when :text then text
        when :texts then self.class.elements(text)
        when :addresses then self.class.elements(text).map { |element| self.class.address(element) }
        else text.to_i
        end
      end

      def store_secret(settings, setting)
        text = value(setting.name)
        return if text.empty? && !@forgets_secrets

        settings.public_send("#{setting.name}=", text.empty? ? nil : text)
      end
    end
  end
end
