# frozen_string_literal: true

module VistaroRuby
  # Lets a message of several keywords be sent with keywords of Ruby's:
  # `folder.smbURLforPath(path, windowsClient: true)` for `smbURLforPath_windowsClient(path, true)`.
  module KeywordForms
    # Defines these forms of all messages that the class or module lists.
    def self.define(constant)
      define_for(constant, constant.instance_variable_get(:@keyed_messages))
      define_for(constant.singleton_class, constant.instance_variable_get(:@keyed_class_messages))
    end

    # Keeps apart the messages that begin alike: the first keyword to {later keywords => name}.
    def self.define_for(owner, messages)
      keyed = (messages || []).map { |message| message.split(":") }.select { |parts| parts.size > 1 }
      return if keyed.empty?

      forms = Module.new
      keyed.group_by(&:first).each { |first, alike| define_form(forms, first, alike) }
      owner.prepend(forms)
    end

    def self.define_form(forms, first, alike)
      targets = alike.to_h do |_, *later|
        later = later.map(&:to_sym)
        [later.sort, [later, [first, *later].join("_").to_sym]]
      end
      forms.define_method(first) do |*arguments, **keywords|
        # Without keywords it is a message of its own, if there is one.
        next super(*arguments) if keywords.empty?

        later, name = targets.fetch(keywords.keys.sort) do
          raise ArgumentError, "#{first} takes no keywords #{keywords.keys.join(', ')}"
        end
        __send__(name, *arguments, *keywords.values_at(*later))
      end
    end
    private_class_method :define_for, :define_form
  end
end
