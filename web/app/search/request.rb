# frozen_string_literal: true

module VistaroWeb
  module Search
    # What the address of a search page asks for. Whatever stands there, this is something that can
    # be searched for.
    class Request
      # The columns that can be sorted by, as they stand in an address.
      SORTS = {
        "name" => "kMDItemDisplayName",
        "date" => "kMDItemContentModificationDate",
        "used" => "kMDItemLastUsedDate",
        "size" => "kMDItemFSSize"
      }.freeze
      MOST_CHARACTERS = 4_000
      LAST_PAGE = 100_000

      # `in` and `kind` are titles: nil when the address is silent, "" for all.
      attr_reader :text, :scope, :kind, :sort, :page, :view

      def initialize(params)
        @text = string(params["q"])[0, MOST_CHARACTERS]
        @scope = params["in"] && string(params["in"])
        @kind = params["kind"] && string(params["kind"])
        @sort = params["sort"] if SORTS.key?(params["sort"])
        @descending = params["order"] == "down"
        @page = string(params["page"])[/\A\d{1,6}\z/].to_i.clamp(1, LAST_PAGE)
        @view = params["view"] if %w[list thumbnails].include?(params["view"])
      end

      def descending?
        @descending
      end

      def blank?
        text.strip.empty?
      end

      # The number of the page unless it is the first.
      def page_or_nil
        page if page > 1
      end

      # The address of this search with some of it changed; nil leaves a part out. Another kind, order
      # or view begins at its first page. `path` is that of another page that takes the same.
      def address(path: "/search", **changes)
        parts = { q: text, in: scope, kind: kind, sort: sort, order: (descending? ? "down" : nil),
                  view: view }.merge(changes).compact
        "#{path}?#{Rack::Utils.build_query(parts)}"
      end

      private

      def string(value)
        value.is_a?(String) ? value.dup.force_encoding(Encoding::UTF_8).scrub.tr("\0", "") : ""
      end
    end
  end
end
