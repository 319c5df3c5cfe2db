# frozen_string_literal: true

module VistaroWeb
  module Administration
    # The search folders and groups as they are stored, to be changed: hashes that hold "title" and
    # either "path" and what belongs to it, or the array "children".
    class FolderTree
      # A change that cannot be; `reason` is the end of the key of a text.
      class Refused < StandardError
        attr_reader :reason

        def initialize(reason)
          @reason = reason
          super(reason)
        end
      end

      LONGEST_TITLE = 200
      MEANT_FOR_NOBODY = /[[:cntrl:]]/
      ADDRESSES = { "afpURLPath" => %r{\Aafp://\S+\z}i, "smbURLPath" => %r{\Asmb://\S+\z}i }.freeze

      attr_reader :entries

      # `only_below`: no folder outside of this one is taken; nil for any.
      def initialize(entries, only_below: nil)
        @entries = entries
        @only_below = only_below && File.realpath(only_below)
      end

      # [entry, depth] of each, a group before its members.
      def rows(entries = @entries, depth = 0)
        entries.flat_map { |entry| [[entry, depth], *rows(entry["children"] || [], depth + 1)] }
      end

      def find(title)
        rows.map(&:first).find { |entry| entry["title"] == title } or raise Refused, "missing"
      end

      # Titles of all groups, in the order of the tree.
      def groups
        rows.filter_map { |entry, _| entry["title"] if entry["children"] }
      end

      # The title of the group that holds this one; "" for the top.
      def group_of(title)
        rows.map(&:first).find { |entry| entry["children"]&.any? { |child| child["title"] == title } }
            .then { |group| group ? group["title"] : "" }
      end

      # `group` is a title, "" for the top. A title that is empty is the name of the folder.
      def add_folder(title, path, group, download:)
        path = canonical(path)
        title = File.basename(path) if title.strip.empty?
        place(group) << { "title" => free_title(title), "download" => download ? 1 : 0, "path" => path,
                          "userDefinedURLPaths" => false }
      end

      def add_group(title, group)
        place(group) << { "title" => free_title(title), "children" => [] }
      end

      def rename(title, new_title)
        entry = find(title)
        entry["title"] = free_title(new_title) unless new_title == title
      end

      def move_to(title, group)
        entry = find(title)
        return if group_of(title) == group
        raise Refused, "inside_itself" if rows([entry]).any? { |inner, _| inner["title"] == group }

        target = place(group)
        take_out(entry)
        target << entry
      end

      # By one place among its neighbours; nothing happens at the end.
      def shift(title, by)
        list = list_of(find(title))
        index = list.index { |entry| entry["title"] == title }
        list.insert(index + by, list.delete_at(index)) if (index + by).between?(0, list.size - 1)
      end

      def put_at(title, path)
        entry = find(title)
        entry["path"] = canonical(path) unless entry["path"] == path
      end

      # Of a group: of all folders in it.
      def allow_download(title, allowed)
        rows([find(title)]).each { |entry, _| entry["download"] = allowed ? 1 : 0 unless entry["children"] }
      end

      # Addresses of one's own in place of those of the share points; with none of them, those again.
      def use_addresses(title, addresses)
        entry = find(title)
        given = addresses.reject { |_, address| address.empty? }
        given.each do |key, address|
          raise Refused, "wrong_address" unless address.match?(ADDRESSES.fetch(key))
        end
        ADDRESSES.each_key { |key| entry.delete(key) }
        entry.merge!(given, "userDefinedURLPaths" => given.any?)
      end

      # A group goes with all that is in it.
      def remove(title)
        take_out(find(title))
      end

      # The members of the group take its place.
      def dissolve(title)
        group = find(title)
        raise Refused, "missing" unless group["children"]

        list = list_of(group)
        index = list.index { |entry| entry.equal?(group) }
        list[index, 1] = group["children"]
      end

      private

      def canonical(path)
        raise Refused, "not_absolute" unless path.start_with?("/") && !path.match?(MEANT_FOR_NOBODY)

        real = File.realpath(path)
        raise Refused, "no_folder" unless File.directory?(real)
        raise Refused, "outside" unless @only_below.nil? || "#{real}/".start_with?("#{@only_below}/")

        real
      rescue SystemCallError
        raise Refused, "no_folder"
      end

      # A title stands for its folder in everything that is stored, so no two are alike.
      def free_title(title)
        title = title.strip
        raise Refused, "no_title" if title.empty?
        raise Refused, "odd_title" if title.match?(MEANT_FOR_NOBODY) || title.length > LONGEST_TITLE
        raise Refused, "title_taken" if rows.any? { |entry, _| entry["title"] == title }

        title
      end

      def place(group)
        return @entries if group.empty?

        find(group)["children"] or raise Refused, "missing"
      end

      def list_of(entry)
        lists = [@entries, *rows.filter_map { |other, _| other["children"] }]
        lists.find { |list| list.any? { |other| other.equal?(entry) } }
      end

      def take_out(entry)
        list_of(entry).delete_if { |other| other.equal?(entry) }
      end
    end
  end
end
