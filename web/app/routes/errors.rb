# frozen_string_literal: true

module VistaroWeb
  module Routes
    # What is said when something goes wrong: no more than that it did. The log has the rest.
    module Errors
      def self.registered(app)
        app.not_found { Errors.answer(self, 404) }
        app.error(Sinatra::BadRequest) { Errors.answer(self, 400) }
        app.error(Security::RunningLimit::Exceeded) { Errors.answer(self, 429) }
        app.error do
          problem = env["sinatra.error"]
          log_event("failed", path: request.path_info, error: problem.class.name,
                              text: problem.message, at: problem.backtrace&.first(5))
          Errors.answer(self, 500)
        end
      end

      def self.answer(route, status)
        route.status status
        return route.page(:"error/failed", status: status) unless route.api?

        route.json_error({ 404 => "not_found", 429 => "busy" }.fetch(status, "failed"))
      end
    end
  end
end
