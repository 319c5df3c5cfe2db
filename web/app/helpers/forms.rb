# frozen_string_literal: true

module VistaroWeb
  # Pages and what all of them have.
  module Forms
    # Renders the page in the layout. `locals` are its data.
    def page(template, **locals)
      erb(template, locals: locals)
    end

    # A part of a page, without the layout.
    def part(template, **locals)
      settings.templates_of_parts.render(template, self, locals)
    end

    # What was filled in, as text: "" when it was not, or is none.
    def field(name)
      value = params[name]
      value.is_a?(String) ? value.dup.force_encoding(Encoding::UTF_8).scrub.tr("\0", "") : ""
    end

    # The hidden field that every form has. Safe: it holds hexadecimal digits alone.
    def token_field
      %(<input type="hidden" name="token" value="#{form_token}">)
    end

    # Whether a program asks, which wants no page.
    def api?
      request.path_info.start_with?("/api/")
    end

    def json(data, status = 200)
      content_type :json
      halt status, JSON.generate(data)
    end

    def json_error(kind, **details)
      content_type :json
      JSON.generate({ error: kind }.merge(details))
    end
  end
end
