# frozen_string_literal: true

module VistaroWeb
  module Search
    # Results as programs get them: dates as seconds since 1970, names as UTF-8 text.
    class JSON
      def initialize(results)
        @results = results
      end

      # The status of HTTP that goes with it.
      def status
        return 200 unless @results.problem

        @results.problem.kind == "time" ? 503 : 422
      end

      def data
        return problem(@results.problem) if @results.problem

        { query: @results.query, total: @results.total, seconds: @results.seconds.round(6),
          cut: @results.cut, groups: @results.groups.map { |group| group_data(group) } }
      end

      private

      # The offset is one of bytes in "source".
      def problem(problem)
        return { error: "time" } if problem.kind == "time"

        { error: "query", problem: problem.kind, part: problem.part, source: problem.source,
          offset: problem.offset }
      end

      def group_data(group)
        data = { kind: group.title, total: group.total }
        data.merge!(page: group.page, pages: group.pages) if group.whole
        data[:items] = group.items.map { |item| item_data(item) } if group.items
        data
      end

      def item_data(item)
        { id: item.id, name: text(item.name), folders: item.folders.map { |name| text(name) },
          type: item.types.first, folder: item.directory, size: (item.bytes unless item.directory),
          modified: item.modified&.to_f, used: item.used&.to_f }
      end

      def text(name)
        name.dup.force_encoding(Encoding::UTF_8).scrub("\u{FFFD}")
      end
    end
  end
end
