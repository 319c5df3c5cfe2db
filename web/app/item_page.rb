# frozen_string_literal: true

require_relative "search_folders"

module VistaroWeb
  # What the page of an item shows: plain values that need the library no more. To be made with the
  # library entered.
  class ItemPage
    # What people want to see of any file stands first, by attribute.
    FIRST = %w[kMDItemKind kMDItemFSSize kMDItemContentModificationDate kMDItemContentCreationDate
               kMDItemLastUsedDate].freeze
    # What few want to know of.
    LESS = %w[kMDItemLogicalSize kMDItemPhysicalSize kMDItemFSCreationDate kMDItemFSContentChangeDate
              kMDItemFSOwnerUserID kMDItemFSOwnerGroupID kMDItemFSInvisible kMDItemFSIsExtensionHidden
              kMDItemFSHasCustomIcon kMDItemFSLabel kMDItemContentType kMDItemAttributeChangeDate
              kMDItemDateAdded kMDItemFSNodeCount].freeze
    # Said elsewhere on the page, or of no use to people.
    LEFT_OUT = %w[kMDItemPath kMDItemDisplayName kMDItemFSName kMDItemContentTypeTree
                  kMDItemTextContent _kMDItemGroupId].freeze
    SIZES = %w[kMDItemFSSize kMDItemLogicalSize kMDItemPhysicalSize].freeze

    # What the type of the file is called.
    TYPE = "kMDItemKind"

    # One line of what is known; a size is a number of bytes, and `type?` tells that the value is the
    # name of the file's type.
    Fact = Struct.new(:name, :value, :size?, :type?)

    attr_reader :name, :kind, :path, :folders, :facts, :more_facts, :open_address, :web_link, :types

    # The address, if a page may lead to it.
    def self.open_address(address)
      address if address&.match?(%r{\A(?:afp|smb|file|urlrunner)://}i)
    end

    def initialize(item, machine)
      @name = item.name
      @kind = item.kind
      @path = item.path
      @folders = SearchFolders.new.names_to(item.folder.b)
      @directory = item.directory?
      @downloadable = item.downloadable?
      @emailable = item.emailable?
      @open_address = self.class.open_address(item.open_address(**machine))
      @web_link = item.web_link
      less = titles_of(LESS)
      @more_facts, @facts = facts_in(item.metadata).partition { |fact| less.include?(fact.name) }
      @types = item.types
    end

    def directory?
      @directory
    end

    def downloadable?
      @downloadable
    end

    def emailable?
      @emailable
    end

    # For programs: values as JSON has them.
    def data
      { name: text(name), kind: kind, path: text(path), folders: folders.map { |part| text(part) },
        folder: directory?, downloadable: downloadable?, open: open_address, link: web_link,
        metadata: (facts + more_facts).to_h { |fact| [fact.name, plain(fact.value)] } }
    end

    private

    def plain(value)
      case value
      when Time then value.to_f
      when String then text(value)
      when Array then value.map { |part| plain(part) }
      else value
      end
    end

    def text(name)
      name.dup.force_encoding(Encoding::UTF_8).scrub("\u{FFFD}")
    end

    def facts_in(metadata)
      left_out = titles_of(LEFT_OUT)
      sizes = titles_of(SIZES)
      type = titles_of([TYPE]).first
      in_order = titles_of(FIRST).to_h { |title| [title, nil] }.merge(metadata)
      in_order.reject { |title, value| left_out.include?(title) || value.nil? || value == "" || value == [] }
              .map { |title, value| Fact.new(title, value, sizes.include?(title), title == type) }
    end

    def titles_of(keys)
      settings = VistaroRuby::VTSettings.sharedInstance
      keys.filter_map { |key| settings.displayNameForAttributeKey(key) }
    end
  end
end
