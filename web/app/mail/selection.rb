# frozen_string_literal: true

module VistaroWeb
  module Mail
    # The files that one message takes along.
    class Selection
      MOST = 20
      # Of all together. What hosts commonly take is 25 MB of message, which Base64 makes a third longer
      # than the files.
      MOST_BYTES = 18_000_000

      # One of them, open for reading.
      Entry = Struct.new(:id, :name, :type, :file) do
        def size
          file.size
        end
      end

      # Yields what the session calls by these ids, as far as its user may send it at this moment, and
      # gives what the block gives. The files are open until then.
      def self.open(session, ids)
        selection = Library.enter { new(session, ids) }
        yield selection
      ensure
        selection&.close
      end

      # How many of the ids lead to nothing that may be sent.
      attr_reader :entries, :missing

      # To be made with the library entered.
      def initialize(session, ids)
        @entries = ids.filter_map { |id| entry(session, id) }
        @missing = ids.size - @entries.size
      end

      # Whether there is something, and nothing is missing.
      def complete?
        missing.zero? && !entries.empty?
      end

      def names
        entries.map(&:name)
      end

      # Attaches the files to the letter; false when they are too long together.
      def attach_to(letter)
        left = MOST_BYTES
        entries.each do |entry|
          bytes = entry.file.read(left) or return false
          left -= bytes.bytesize
          letter.attach(entry.name, bytes, entry.type)
        end
        true
      end

      def too_long?
        entries.sum(&:size) > MOST_BYTES
      end

      def close
        entries.each { |entry| entry.file.close }
      end

      private

      def entry(session, id)
        item = Item.find(session, id)
        file = item.open_file if item&.emailable?
        Entry.new(id, item.name, item.mime_type, file) if file
      end
    end
  end
end
