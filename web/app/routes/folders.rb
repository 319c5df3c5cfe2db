# frozen_string_literal: true

require_relative "administration"

module VistaroWeb
  module Routes
    # The search folders and groups, for administrators alone.
    module Folders
      # What the buttons of the tree do, by their names.
      CHANGES = {
        "up" => ->(tree, title) { tree.shift(title, -1) },
        "down" => ->(tree, title) { tree.shift(title, 1) },
        "allow" => ->(tree, title) { tree.allow_download(title, true) },
        "refuse" => ->(tree, title) { tree.allow_download(title, false) },
        "remove" => ->(tree, title) { tree.remove(title) },
        "dissolve" => ->(tree, title) { tree.dissolve(title) }
      }.freeze
      NEW = %w[title path group download].freeze

      def self.registered(app)
        app.helpers Helpers

        Administration.get(app, "/admin/folders") { folders_page }

        Administration.post(app, "/admin/folders") do
          change_folders(->(problem) { folders_page(problem) }) { |tree| add_to(tree) }
        end

        Administration.post(app, "/admin/folders/change") do
          change = CHANGES[field("change")] || halt(400)
          change_folders(->(problem) { folders_page(problem) }) { |tree| change.call(tree, field("of")) }
        end

        Administration.get(app, "/admin/folders/edit") { folder_page(field("of")) }

        Administration.post(app, "/admin/folders/edit") do
          change_folders(->(problem) { folder_page(field("of"), problem) }) { |tree| edit(tree, field("of")) }
        end
      end

      # What the routes need besides.
      module Helpers
        private

        def folders_page(problem = nil)
          rows, groups = Library.enter do
            folders = VistaroRuby::VTSettings.sharedInstance.searchFolders
            [VistaroWeb::Administration::FolderRows.of(folders), stored_tree.groups]
          end
          typed = problem && field("change").empty? ? Folders::NEW.to_h { |name| [name, field(name)] } : {}
          page :"administration/folders", rows: rows, groups: groups, problem: problem, typed: typed,
                                          done: params["done"] == "saved"
        end

        def folder_page(title, problem = nil)
          row, tree = Library.enter do
            folders = VistaroRuby::VTSettings.sharedInstance.searchFolders
            [VistaroWeb::Administration::FolderRows.of(folders).find do |other|
               other.title == title
             end, stored_tree]
          end
          halt 404 unless row
          page :"administration/folder", row: row, problem: problem, group: tree.group_of(title),
                                         groups: tree.groups - [title]
        end

        # To be called with the library entered.
        def stored_tree
          stored = VistaroRuby::VTSettings.sharedInstance.searchFolders
          data = VistaroRuby::VTSearchFolder.serializedDataFromFolderArray(stored).map(&:to_h)
          VistaroWeb::Administration::FolderTree.new(data, only_below: ENV.fetch("VISTARO_WEB_TREE", nil))
        end

        # Changes the tree by the block. `show` renders the page with the key of what went wrong.
        def change_folders(show)
          problem = change_settings do |settings|
            tree = stored_tree
            yield tree
            settings.searchFolders = VistaroRuby::VTSearchFolder.deserializedFoldersFromStorage(tree.entries)
          end
          halt 422, show.call(problem) if problem

          log_event("folders_changed", change: field("change"), folder: field("of"), title: field("title"))
          redirect "/admin/folders?done=saved", 303
        rescue VistaroWeb::Administration::FolderTree::Refused => e
          halt 422, show.call("administration.folder_#{e.reason}")
        end

        def add_to(tree)
          return tree.add_group(field("title"), field("group")) if field("what") == "group"

          tree.add_folder(field("title"), field("path"), field("group"), download: field("download") == "1")
        end

        def edit(tree, title)
          tree.move_to(title, field("group"))
          unless tree.find(title)["children"]
            tree.put_at(title, field("path"))
            tree.allow_download(title, field("download") == "1")
            own = field("addresses") == "own"
            tree.use_addresses(title, "afpURLPath" => own ? field("afp") : "",
"smbURLPath" => own ? field("smb") : "")
          end
          tree.rename(title, field("title"))
        end
      end
    end
  end
end
