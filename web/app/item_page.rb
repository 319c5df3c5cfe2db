# frozen_string_literal: true

module VistaroWeb
  # What the page of an item shows: plain values that need the library no more. To be made with the
  # library entered.
  class ItemPage
    # What people want to see of any file stands first, by attribute.
    FIRST = %w[kMDItemKind kMDItemFSSize kMDItemContentModificationDate kMDItemContentCreationDate
               kMDItemLastUsedDate].freeze
    # Said elsewhere on the page, or of no use to people.
    LEFT_OUT = %w[kMDItemPath kMDItemDisplayName kMDItemFSName kMDItemContentTypeTree
                  kMDItemTextContent].freeze
    SIZES = %w[kMDItemFSSize kMDItemLogicalSize kMDItemPhysicalSize].freeze

    # One line of what is known; a size is a number of bytes.
    Fact = Struct.new(:name, :value, :size?)

    attr_reader :name, :kind, :path, :folders, :facts, :open_address, :web_link, :types

    def initialize(item, machine)
      @name = item.name
      @kind = item.kind
      @path = item.path
      @folders = folders_of(item.folder)
      @directory = item.directory?
      @downloadable = item.downloadable?
      @emailable = item.emailable?
      @open_address = allowed(item.open_address(**machine))
      @web_link = item.web_link
      @facts = facts_in(item.metadata)
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

    private

    # From the title of the search folder down; from the root when it lies in none by its name.
    def folders_of(folder)
      root, title = search_folders.find { |path, _| "#{folder}/".start_with?("#{path}/") }
      return folder.split("/").reject(&:empty?) unless root

      [title, *folder.delete_prefix(root).split("/").reject(&:empty?)]
    end

    # [path, title] of each that is no group.
    def search_folders
      concrete(VistaroRuby::VTSettings.sharedInstance.searchFolders).map do |folder|
        [folder.path.to_s.b.delete_suffix("/"), folder.title]
      end
    end

    def concrete(folders)
      folders.flat_map do |folder|
        folder.is_a?(VistaroRuby::VTSearchFolderGroup) ? concrete(folder.folders) : [folder]
      end
    end

    # An address that a page may lead to.
    def allowed(address)
      address if address&.match?(%r{\A(?:afp|smb|file|urlrunner)://}i)
    end

    def facts_in(metadata)
      left_out = titles_of(LEFT_OUT)
      sizes = titles_of(SIZES)
      in_order = titles_of(FIRST).to_h { |title| [title, nil] }.merge(metadata)
      in_order.reject { |title, value| left_out.include?(title) || value.nil? || value == "" || value == [] }
              .map { |title, value| Fact.new(title, value, sizes.include?(title)) }
    end

    def titles_of(keys)
      settings = VistaroRuby::VTSettings.sharedInstance
      keys.filter_map { |key| settings.displayNameForAttributeKey(key) }
    end
  end
end
