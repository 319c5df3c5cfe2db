# frozen_string_literal: true

require_relative "item_file"
require_relative "searched_places"

module VistaroWeb
  # One file that a page of the session has shown, as its user may see it at this moment. To be made
  # and asked with the library entered.
  class Item
    include VistaroRuby

    INDEX = 0

    attr_reader :path, :group

    # The item that the session calls `id`; nil when it calls none so, it lies in no search folder any
    # more, or the user may not read it now.
    def self.find(session, id)
      hit = session.item_ids.hit_of(id)
      item = hit && new(session.user, hit)
      item if item&.visible?
    end

    def initialize(user, hit)
      @user = user
      @hit = hit
      @path = hit.path
      @group = group_of_one
    end

    def kind
      @hit.kind
    end

    def types
      @hit.types
    end

    def name
      File.basename(path)
    end

    def folder
      File.dirname(path)
    end

    # Whether it is there, the user may read it, and it lies where one may search.
    def visible?
      return folder_visible? if directory?

      file = open_file or return false
      file.close
      true
    end

    def directory?
      @directory = File.directory?(path) if @directory.nil?
      @directory
    end

    # The file, opened with the user's rights as the kernel sees them; nil when it is not the user's
    # to read. It is the caller's to close.
    def open_file
      descriptor = @user.contentDescriptorForPath(path) or return

      file = ItemFile.new(descriptor)
      return file if SearchedPlaces.include?(file.real_path)

      file.close
      nil
    end

    def downloadable?
      group.isDownloadableForItemAtIndex(INDEX)
    end

    # What may not be downloaded may not leave by mail either.
    def emailable?
      downloadable? && group.isEmailableAtIndex(INDEX)
    end

    def mime_type
      group.mimeTypeForItemAtIndex(INDEX)
    end

    # {"Authors" => …}, by the names that people have for them.
    def metadata
      group.metadataForItemAtIndex(INDEX).to_h
    end

    # What opens the item on the visitor's machine; nil when nothing does.
    def open_address(windows:, local:)
      group.openURLPathForItemAtIndex(INDEX, windowsClient: windows, localClient: local)
    end

    # The address in a file that holds one; nil unless it is one of the web.
    def web_link
      link = group.webLinkForItemAtIndex(INDEX)
      link if link&.match?(%r{\Ahttps?://[^\s"<>]+\z}i)
    end

    private

    # A folder is never opened: a search has shown it, and the library's rule says whether it may
    # still be.
    def folder_visible?
      SearchedPlaces.include?(File.realpath(path)) && @user.accessAllowedToPath(path)
    rescue SystemCallError
      false
    end

    # A group of the item alone, for what the library offers for items of groups.
    def group_of_one
      record = { "kMDItemPath" => path, "kMDItemContentTypeTree" => @hit.types }
      VTSearchResult.alloc.initWithGroupKind(nil, results: [record], attributeKeys: [], user: @user,
                                                  searchFolders: VTSettings.sharedInstance.searchFolders)
    end
  end
end
