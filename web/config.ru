# frozen_string_literal: true

# The web application for any Rack server; `web/server.rb` serves it with the ports and certificates
# of the settings.
require_relative "app/boot"
run VistaroWeb.boot
