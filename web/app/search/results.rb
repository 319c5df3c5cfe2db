# frozen_string_literal: true

module VistaroWeb
  module Search
    # What a search found, as a page shows it: plain values that need the library no more.
    Results = Struct.new(:groups, :total, :seconds, :cut, :notes, :problem, :query, keyword_init: true) do
      def empty?
        groups.empty?
      end
    end

    # Why a query was rejected: what is wrong, and before which character of `query`.
    Problem = Struct.new(:text, :query, :offset, keyword_init: true)

    # The hits of one kind. `items` are those of the page, or the first few when there are several
    # groups; `whole` tells which.
    Group = Struct.new(:title, :total, :items, :page, :pages, :thumbnails, :sorted_by, :descending, :whole,
                       keyword_init: true)

    # One hit. Names are as the file system has them: bytes that may not be UTF-8.
    Item = Struct.new(:id, :name, :folder, :modified, :used, :bytes, :directory, keyword_init: true)
  end
end
