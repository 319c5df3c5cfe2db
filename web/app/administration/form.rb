# frozen_string_literal: true

module VistaroWeb
  module Administration
    # Settings that are changed together, by a form whose fields have their names.
    class Form
      # How one is typed and stored: :text, :secret (never shown; kept when nothing is typed), :port,
      # :number, :flag.
      Setting = Struct.new(:name, :type, :pattern)

      class << self
        def all
          @all ||= []
        end

        # Declares one. A text that is typed has to match `pattern`; an empty one removes the setting.
        def setting(name, type, pattern: nil)
          all << Setting.new(name, type, pattern)
        end
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

        value = settings.public_send(setting.name)
        return value && value != 0 ? "1" : "" if setting.type == :flag

        value.to_s
      end

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

          settings.public_send("#{setting.name}=", stored_value(setting))
        end
      end

      private

      # The end of the key of a text for settings that do not go together.
      def problem_together
        nil
      end

      def fits?(setting)
        text = value(setting.name)
        case setting.type
        when :port then text.match?(/\A\d{1,5}\z/) && text.to_i.between?(1, 65_535)
        when :number then text.match?(/\A\d\z/)
        when :flag then text == "1"
        when :secret then text.length <= 200 && !text.match?(/[[:cntrl:]]/)
        else text.match?(setting.pattern)
        end
      end

      def stored_value(setting)
        text = value(setting.name)
        return text == "1" if setting.type == :flag
        return if text.empty?

        setting.type == :text ? text : text.to_i
      end

      def store_secret(settings, setting)
        text = value(setting.name)
        return if text.empty? && !@forgets_secrets

        settings.public_send("#{setting.name}=", text.empty? ? nil : text)
      end
    end
  end
end
