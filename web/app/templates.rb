# frozen_string_literal: true

require "tilt/erubi"

module VistaroWeb
  # The parts of pages, compiled once. A page of results has dozens of them, for which the way through
  # the framework would take longer than all the rest.
  class Templates
    def initialize(folder)
      @templates = Dir.glob("**/*.erb", base: folder).to_h do |name|
        template = Tilt::ErubiTemplate.new(File.join(folder, name), default_encoding: "UTF-8",
                                                                    escape_html: true)
        [name.delete_suffix(".erb").to_sym, template]
      end
    end

    # The text of the part for a request, whose helpers it may call. Raises KeyError for an unknown one.
    def render(name, request, locals)
      @templates.fetch(name).render(request, locals)
    end
  end
end
