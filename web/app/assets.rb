# frozen_string_literal: true

require "openssl"

module VistaroWeb
  # The files that browsers may keep, since their addresses change when they do.
  class Assets
    def initialize(folder)
      @addresses = Dir.glob("**/*", base: folder).filter_map do |name|
        file = File.join(folder, name)
        next unless File.file?(file)

        [name, "/#{name}?#{OpenSSL::Digest::SHA256.file(file).hexdigest[0, 12]}".freeze]
      end.to_h.freeze
    end

    # The address of the file `name` of the folder. Raises KeyError when there is none.
    def address_of(name)
      @addresses.fetch(name)
    end
  end
end
