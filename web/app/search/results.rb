# frozen_string_literal: true

module VistaroWeb
  module Search
    # What a search found, as a page shows it: plain values that need the library no more.
    # `kind` is the title of the only kind that is shown; nil for all. `scope` is the title of the
    # folder that was searched; "" for all. `mailable` tells whether files can be sent by mail at all.
    Results = Struct.new(:groups, :total, :kind, :seconds, :query, :cut, :names_only, :notes, :problem,
                         :mailable, :scope, keyword_init: true) do
      # Nothing, because of a Problem.
      def self.none(problem)
        new(groups: [], total: 0, notes: [], problem: problem)
      end

      def empty?
        groups.empty?
      end

      # Gives the items the ids by which the session speaks of them.
      def identify(item_ids)
        groups.each do |group|
          group.items&.each do |item|
            item.id = item_ids.id_of(ItemIds::Hit.new(item.path, item.types, group.title))
          end
        end
        self
      end
    end

    # Why there was no search: `kind` is "query" for one that the index rejects, with what it
    # expects, in English, as `part`; or what TypedSearch.queryFor tells, with the part that is meant.
    # `offset` is a byte of `source`. Or "time": it took too long; there is no part and no source.
    Problem = Struct.new(:kind, :part, :source, :offset, keyword_init: true) do
      # What stands before the offset, in whole characters.
      def before
        source.byteslice(0, offset).scrub("")
      end

      # What begins there; never empty, so that it can be marked.
      def after
        source.byteslice(offset..).to_s.scrub("").then { |rest| rest.empty? ? " " : rest }
      end
    end

    # The hits of one kind. `items` are those of the page, or the first few when there are several
    # groups; `whole` tells which.
    Group = Struct.new(:title, :total, :items, :page, :pages, :thumbnails, :sorted_by, :descending, :whole,
                       keyword_init: true)

    # One hit. Path and names are as the file system has them: bytes that may not be UTF-8. `folders`
    # are the names that lead to it. `id` is what pages may show in place of the path.
    Item = Struct.new(:id, :path, :name, :folders, :modified, :used, :bytes, :types, :directory,
                      keyword_init: true)
  end
end
