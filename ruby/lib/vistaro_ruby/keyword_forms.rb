# frozen_string_literal: true

module VistaroRuby
  # Lets a message of several keywords be sent with keywords of Ruby's:
  # `folder.smbURLforPath(path, windowsClient: true)` for `smbURLforPath_windowsClient(path, true)`.
  module KeywordForms
    # Defines these forms of all messages that the class or module lists, inherited ones included.
    def self.define(constant)
      define_for(constant, listed(constant, :@keyed_messages))
      define_for(constant.singleton_class, listed(constant, :@keyed_class_messages))
    end

    def self.listed(constant, list)
      constant.ancestors.flat_map { |ancestor| ancestor.instance_variable_get(list) || [] }
    end

    # Keeps apart the messages that begin alike: the first keyword to {later keywords => name}.
    def self.define_for(owner, messages)
      keyed = messages.map { |message| message.split(":") }.select { |parts| parts.size > 1 }
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
    private_class_method :listed, :define_for, :define_form
  end
end
