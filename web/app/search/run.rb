# frozen_string_literal: true

require_relative "request"
require_relative "results"
require_relative "../search_folders"

module VistaroWeb
  module Search
    # Runs a search on behalf of a user and gives Results, whose items have no ids yet. To be called
    # with the library entered.
    class Run
      include VistaroRuby

      FIRST_FEW = 5
      FIRST_FEW_THUMBNAILS = 8
      DEFAULT_PER_PAGE = 25
      SORTED_BY = Request::SORTS.invert.freeze

      # Raises ArgumentError without a user: nothing is searched on nobody's behalf.
      def initialize(request, user)
        @request = request
        @folders = SearchFolders.new
        @user = user or raise ArgumentError, "a search needs a user"
      end

      # Nil when the files have to be walked and that takes more than so many seconds.
      def results(longest_walk:)
        start = Process.clock_gettime(Process::CLOCK_MONOTONIC)
        typed = TypedSearch.queryFor(@request.text)
        return not_a_query(typed) if typed["rejection"]

        manager = VTSearchManager.alloc.initWithUser(@user)
        manager.setLongestWalkSeconds(longest_walk)
        container = manager.executeQuery(typed["query"], forSearchFolders: folders)
        return if manager.lastNotes["walkWasGivenUp"]
        return rejected(typed["query"], manager) unless container

        groups, total = groups_in(container)
        Results.new(groups: groups, total: total, kind: kind_title, query: typed["query"],
                    names_only: !typed["asksForText"], notes: notes(manager),
                    cut: manager.lastSearchWasCut,
                    scope: scope_title, mailable: VTSettings.sharedInstance.mailingConfiguredAndEnabled,
                    seconds: Process.clock_gettime(Process::CLOCK_MONOTONIC) - start)
      end

      private

      # What should be said beside the hits: [key of a text, its values].
      def notes(manager)
        told = manager.lastNotes
        unknown = told["unknownAttributes"].map { |name| ["unknown_attribute", { name: name }] }
        told["hasNoAccount"] ? [["no_account", {}], *unknown] : unknown
      end

      # What was typed makes no query.
      def not_a_query(typed)
        problem = Problem.new(kind: typed["rejection"], part: typed["text"], source: @request.text,
                              offset: typed["offset"])
        Results.none(problem)
      end

      def folders
        all = VTSettings.sharedInstance.searchFolders
        title = scope_title
        return all if title.empty?

        found = all.each.lazy.filter_map { |folder| folder.searchFolderForTitle(title) }.first
        found ? [found] : []
      end

      def scope_title
        @request.scope || @user.defaultSearchFolder&.title.to_s
      end

      # The index takes what was typed for a wrong query.
      def rejected(query, manager)
        why = manager.lastRejection
        Results.none(Problem.new(kind: "query", part: why && why["expected"], source: query,
                                 offset: why ? why["offset"] : 0))
      end

      # The groups to show, and the number of hits in all of them.
      def groups_in(container)
        found = container.results.to_a
        total = found.sum(&:count)
        wanted = kind_title
        whole = !wanted.nil? || found.size == 1
        groups = found.map do |group|
          shown(group, items: wanted.nil? || group.title == wanted, whole: whole)
        end
        [groups, total]
      end

      def kind_title
        title = @request.kind || @user.defaultSearchKind&.title
        title unless title.nil? || title.empty?
      end

      def shown(group, items:, whole:)
        thumbnails = @request.view ? @request.view == "thumbnails" : group.thumbnailMode
        result = Group.new(title: group.title, total: group.count, thumbnails: thumbnails, whole: whole,
                           page: 1, pages: 1, items: nil)
        return result unless items

        whole ? fill_page(result, group) : fill_first_few(result, group)
        result
      end

      def fill_first_few(result, group)
        few = result.thumbnails ? FIRST_FEW_THUMBNAILS : FIRST_FEW
        result.items = items_of(group, 0, few)
      end

      def fill_page(result, group)
        group.thumbnailMode = result.thumbnails
        sort(group)
        per_page = results_per_page
        result.pages = (group.count + per_page - 1) / per_page
        result.page = group.currentPage = @request.page.clamp(1, result.pages)
        result.sorted_by = SORTED_BY[group.sortAttribute] if @request.sort
        result.descending = group.descendingSort
        result.items = items_of(group, (result.page - 1) * per_page, per_page)
      end

      # The first sort by an attribute may go either way; the second turns it round.
      def sort(group)
        return unless @request.sort

        attribute = Request::SORTS.fetch(@request.sort)
        group.sortByAttribute(attribute)
        group.sortByAttribute(attribute) if group.descendingSort != @request.descending?
      end

      def results_per_page
        stored = @user.resultsPerPage.to_i
        stored.positive? ? stored : DEFAULT_PER_PAGE
      end

      def items_of(group, first, count)
        last = [first + count, group.count].min
        (first...last).map { |index| item_at(group, index) }
      end

      # The messages by their own names: with keywords they would take most of the time of a page.
      def item_at(group, index)
        path = group.pathForItemAtIndex(index)
        types = (group.valueForKey_atIndex("kMDItemContentTypeTree", index) || []).to_a
        Item.new(path: path, name: File.basename(path), folders: @folders.names_to(File.dirname(path).b),
                 modified: group.valueForKey_atIndex("kMDItemContentModificationDate", index),
                 used: group.valueForKey_atIndex("kMDItemLastUsedDate", index),
                 bytes: group.valueForKey_atIndex("kMDItemFSSize", index),
                 types: types, directory: types.include?("public.directory"))
      end
    end
  end
end
