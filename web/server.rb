# frozen_string_literal: true

# Serves the web application until it is told to end:
#   ruby -I ruby/lib -I build/release/ruby web/server.rb [--bind ADDRESS] [--port N]
#
# On SIGHUP the settings are read anew, on SIGTERM and SIGINT what is running is finished first.

require_relative "app/server"
VistaroWeb::Server.new(ARGV).run
