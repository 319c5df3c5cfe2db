# frozen_string_literal: true

require "openssl"
require "securerandom"

module VistaroWeb
  # The visitor of a request: who it is, in which language, and whether a form is one of ours.
  module Visit
    # States of a connection as the kernel counts them: TIME_WAIT, CLOSE, CLOSE_WAIT, LAST_ACK, CLOSING.
    CLOSED_BY_PEER = [6, 7, 8, 9, 11].freeze
    SECRET = SecureRandom.bytes(32)

    # The session of whoever is logged in; nil when nobody is. Where nobody has to log in, everybody
    # has one.
    def session_of_visitor
      return @session_of_visitor if defined?(@session_of_visitor)

      @session_of_visitor = session_that_stands || anonymous_session
    end

    def user
      session_of_visitor&.user
    end

    def administrator?
      session_of_visitor&.administrator? || false
    end

    # Sends whoever is not logged in to do so, and back to this page afterwards.
    def require_login
      return if session_of_visitor

      halt 401, json_error("login") if api?
      target = request.get? ? "?#{Rack::Utils.build_query('to' => request.fullpath)}" : ""
      redirect "/login#{target}", 303
    end

    def require_administrator
      require_login
      return if administrator?

      log_event("refused", reason: "administrator")
      halt 403, api? ? json_error("forbidden") : page(:"error/failed", status: 403)
    end

    # Makes the session the visitor's, under an id that nobody has seen before, and ends the one
    # that was.
    def take_session(id, session)
      settings.store.finish(cookie_value)
      put_cookie(id)
      @session_of_visitor = session
    end

    def drop_session
      settings.store.finish(cookie_value)
      remove_cookie
      @session_of_visitor = nil
    end

    # What every form sends back. Bound to the cookie, which other sites can neither read nor set.
    def form_token
      token_for(cookie_value || begin_visit)
    end

    # Refuses a form that no page of ours showed to this visitor.
    def require_form_token
      given = params["token"]
      expected = cookie_value && token_for(cookie_value)
      return if expected && given.is_a?(String) && Rack::Utils.secure_compare(expected, given)

      log_event("refused", reason: "token")
      halt 403, api? ? json_error("token") : page(:"error/failed", status: 403)
    end

    def language
      @language ||= Text.preferred(request.env["HTTP_ACCEPT_LANGUAGE"])
    end

    # The text in the visitor's language, see Text.fetch.
    def t(key, **values)
      Text.fetch(language, key, **values)
    end

    # Whether whoever made the request has closed the connection, and does not wait for the answer.
    def visitor_is_gone?
      socket = request.env["puma.socket"]&.to_io
      return false unless socket.is_a?(TCPSocket)

      CLOSED_BY_PEER.include?(socket.getsockopt(Socket::IPPROTO_TCP, Socket::TCP_INFO).data.getbyte(0))
    rescue IOError, SystemCallError
      true
    end

    def log_event(event, **details)
      EventLog.write(event, source: request.ip, user: session_of_visitor&.username, **details)
    end

    private

    # The session of the cookie, unless it is over, its account is not allowed any more, or it was
    # begun when the settings let people in another way.
    def session_that_stands
      session = settings.store.find(cookie_value) or return
      login = settings.login
      return session if session.anonymous? == login.anonymous? &&
                        session.still_allowed?(settings.store.now) { login.account_again(session) }

      EventLog.write("session_ended", user: session.username, reason: "account")
      settings.store.finish(cookie_value)
      nil
    end

    def anonymous_session
      user = settings.login.anonymous_user or return
      id, session = settings.store.begin_for(user, anonymous: true)
      put_cookie(id)
      session
    end

    def cookie_name
      request.ssl? ? "__Host-vistaro" : "vistaro"
    end

    def cookie_value
      @cookie_value ||= request.cookies[cookie_name]&.then { |value| value[/\A[\w-]{43}\z/] }
    end

    # Lets a visitor who is not logged in have a cookie that the token of a form can belong to.
    def begin_visit
      SecureRandom.urlsafe_base64(32).tap { |id| put_cookie(id) }
    end

    def put_cookie(id)
      @cookie_value = id
      response.set_cookie(cookie_name, value: id, path: "/", httponly: true, same_site: :lax,
                                       secure: request.ssl?)
    end

    def remove_cookie
      @cookie_value = nil
      response.delete_cookie(cookie_name, path: "/", httponly: true, same_site: :lax,
                                          secure: request.ssl?)
    end

    def token_for(id)
      OpenSSL::HMAC.hexdigest("SHA256", SECRET, id)
    end
  end
end
