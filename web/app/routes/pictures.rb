# frozen_string_literal: true

require_relative "../pictures"
require_relative "../type_icons"

module VistaroWeb
  module Routes
    # The pictures of files, and the icons of types.
    module Pictures
      # How many are made for one user at a time.
      MOST_RUNNING = 8

      def self.registered(app)
        app.helpers Helpers
        app.set :icons, TypeIcons.new
        app.set :pictures_running, Security::RunningLimit.new(MOST_RUNNING)

        app.get "/item/:id/thumbnail" do
          require_login
          send_picture(&:thumbnail)
        end

        app.get "/item/:id/preview" do
          require_login
          send_picture(&:preview)
        end

        app.get "/icons/:name.svg" do
          file = settings.icons.file(params["name"]) or halt 404
          cache_control :public, max_age: 86_400
          send_file file, type: "image/svg+xml"
        end
      end

      # What the routes need besides.
      module Helpers
        # Sends the picture that the block takes of Pictures, or the icon of the item's type. The
        # browser may keep the picture, but has to ask each time whether it may still show it.
        def send_picture(&)
          file = settings.pictures_running.run(user.uid) { picture(&) } or redirect icon_address, 303
          headers "Cache-Control" => "private, no-cache", "Content-Type" => "image/png"
          mark = %("#{file.modified.strftime('%s%N')}-#{file.size}")
          headers "ETag" => mark
          if request.get_header("HTTP_IF_NONE_MATCH") == mark
            file.close
            halt 304
          end
          headers "Content-Length" => file.size.to_s
          Download::Body.new(file, 0...file.size)
        end

        # The address of the icon of these types.
        def icon_of(types)
          "/icons/#{settings.icons.name_for(types)}.svg"
        end

        private

        def picture
          with_item { |item| yield VistaroWeb::Pictures.new(item) }
        end

        def icon_address
          icon_of(session_of_visitor.item_ids.hit_of(params["id"]).types)
        end
      end
    end
  end
end
