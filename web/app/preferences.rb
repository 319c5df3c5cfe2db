# frozen_string_literal: true

module VistaroWeb
  # What a user prefers: how many results make a page, where and for what kind to search, and what a
  # click on a name does. To be made with the library entered.
  class Preferences
    include VistaroRuby

    MOST_PER_PAGE = 200
    # As they are numbered in the settings.
    ACTIONS = %w[show download open].freeze

    attr_reader :per_page, :folder, :kind, :action, :folders, :kinds

    # What a click on a name does for the user: one of ACTIONS.
    def self.action_of(user)
      ACTIONS[user.defaultAction] || ACTIONS.first
    end

    def initialize(user)
      @per_page = user.resultsPerPage.to_s
      @folder = user.defaultSearchFolder&.title.to_s
      @kind = user.defaultSearchKind&.title.to_s
      @action = self.class.action_of(user)
      @folders = titles_in(VTSettings.sharedInstance.searchFolders, 0)
      @kinds = VTSearchKind.searchableKinds.map(&:title)
    end

    # The same choices with what somebody wanted of them.
    def with(wanted)
      @per_page, @folder, @kind, @action = wanted.to_a
      self
    end

    # What a form asks for, each a text; "" for all folders and for all kinds.
    Wanted = Struct.new(:per_page, :folder, :kind, :action) do
      include VistaroRuby

      # The key of a text, or nil when all of it can be.
      def problem
        number = per_page[/\A\d{1,4}\z/].to_i
        return "preferences.wrong_per_page" unless number.between?(1, MOST_PER_PAGE)

        "preferences.wrong_choice" unless ACTIONS.include?(action)
      end

      # To be called while the settings are being changed. A folder or kind that is not there any more
      # counts as all of them.
      def store(user)
        folders = VTSettings.sharedInstance.searchFolders
        user.resultsPerPage = per_page.to_i
        user.defaultSearchFolder = folders.filter_map { |place| place.searchFolderForTitle(folder) }.first
        user.defaultSearchKind = kind.empty? ? nil : VTSearchKind.kindWithTitle(kind)
        user.defaultAction = ACTIONS.index(action)
      end
    end

    private

    # [title, depth] of folders and groups, in the order of the tree.
    def titles_in(folders, depth)
      folders.flat_map do |folder|
        members = folder.is_a?(VTSearchFolderGroup) ? folder.folders.to_a : []
        [[folder.title, depth], *titles_in(members, depth + 1)]
      end
    end
  end
end
