# frozen_string_literal: true

module VistaroWeb
  module Mail
    # Addresses that mail is sent to.
    module Address
      # What everybody's address looks like: nothing in it needs quoting, in a header or to a host.
      PATTERN = /\A[A-Za-z0-9.!#$%&'*+=?^_`{|}~-]{1,64}@[A-Za-z0-9](?:[A-Za-z0-9.-]{0,251}[A-Za-z0-9])?\z/
      MOST = 20

      # The addresses in what was typed, apart by commas, semicolons or white space, each once; nil
      # when there is none, one is no address, or they are too many.
      def self.list(text)
        addresses = text.split(/[\s,;]+/).reject(&:empty?).uniq
        addresses if addresses.size.between?(1, MOST) && addresses.all?(PATTERN)
      end
    end
  end
end
