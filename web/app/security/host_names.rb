# frozen_string_literal: true

require "socket"
require "ipaddr"

module VistaroWeb
  module Security
    # The names under which this server may be asked for. Any other in a request's Host means that
    # somebody else's name was made to lead here.
    class HostNames
      # Beside the machine's own names and addresses and the name in the settings, those that the
      # global setting "webHostNames", an array of texts, lists: such as that of a proxy.
      EXTRA_SETTING = "webHostNames"

      # `host` as the header Host has it, with or without a port.
      def include?(host)
        name = name_in(host)
        return false unless name

        own.include?(name) || configured.include?(name)
      end

      private

      def name_in(host)
        case host
        when /\A\[([0-9a-fA-F:.]+)\](?::\d{1,5})?\z/ then address(Regexp.last_match(1))
        when /\A([a-zA-Z0-9._-]{1,253}?)\.?(?::\d{1,5})?\z/ then Regexp.last_match(1).downcase
        end
      end

      def address(text)
        IPAddr.new(text).to_s
      rescue IPAddr::Error
        nil
      end

      def own
        @own ||= begin
          addresses = Socket.ip_address_list.map { |info| address(info.ip_address.sub(/%.*/, "")) }
          name = Socket.gethostname.downcase
          short = name.split(".").first
          Set.new(["localhost", "127.0.0.1", "::1", name, short, "#{short}.local", *addresses])
        end
      end

      def configured
        Library.enter do
          settings = VistaroRuby::VTSettings.sharedInstance
          more = settings.valueForUndefinedKey(EXTRA_SETTING)
          names = [settings.serverName, *(more.to_a if more.respond_to?(:to_a))]
          names.grep(String).to_set { |name| name.downcase.delete_suffix(".") }
        end
      end
    end
  end
end
