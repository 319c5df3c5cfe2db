# frozen_string_literal: true

require "sinatra/base"
require_relative "assets"
require_relative "event_log"
require_relative "event_pump"
require_relative "library"
require_relative "templates"
require_relative "text"
require_relative "sessions"
require_relative "security/browser_checks"
require_relative "security/forwarding"
require_relative "security/headers"
require_relative "security/running_limit"
require_relative "helpers/formatting"
require_relative "helpers/forms"
require_relative "helpers/visit"
require_relative "routes/administration"
require_relative "routes/api"
require_relative "routes/api_session"
require_relative "routes/clicks"
require_relative "routes/errors"
require_relative "routes/folders"
require_relative "routes/item"
require_relative "routes/login"
require_relative "routes/mail"
require_relative "routes/pictures"
require_relative "routes/preferences"
require_relative "routes/saved"
require_relative "routes/search"

module VistaroWeb
  # The application: what is true of every page. What the pages do stands in `routes`.
  class Application < Sinatra::Base
    set :root, File.expand_path("..", __dir__)
    set :environment, :production
    set :sessions, false # ours are on the server, see Sessions
    set :protection, false # see `security`
    set :method_override, false
    set :logging, false
    set :show_exceptions, false
    set :raise_errors, false
    set :dump_errors, false
    set :absolute_redirects, false
    set :erb, escape_html: true
    set :store, Sessions.new
    set :assets, Assets.new(public_folder)
    set :templates_of_parts, Templates.new(views)

    use Security::Forwarding
    use Security::Headers
    use Security::BrowserChecks

    helpers Visit, Formatting, Forms
    register Routes::API, Routes::APISession, Routes::Administration, Routes::Clicks, Routes::Errors,
             Routes::Folders, Routes::Item, Routes::Login, Routes::Mail, Routes::Pictures,
             Routes::Preferences, Routes::Saved, Routes::Search
  end
end
