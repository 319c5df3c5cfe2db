# frozen_string_literal: true

# Makes what a demonstration needs in a folder, which it owns:
#   ruby web/demo/make.rb FOLDER
#     root  a root prefix with the accounts `administrator` and `guest`
#     tree  the sample files, made once and kept while nothing about them changes
# Prints one line for each account: its name and its new password.

require "digest"
require_relative "accounts"
require_relative "sample_tree"

folder = File.expand_path(ARGV.fetch(0))
tree = File.join(folder, "tree")
root = File.join(folder, "root")
["Library/Application Support", "Library/Caches", "tmp", "var/lib/vistaro"].each do |name|
  FileUtils.mkdir_p(File.join(root, name), mode: 0o755)
end
accounts = Accounts.new(root)
accounts.write

sources = Dir[File.join(__dir__, "*.rb")].map { |path| File.binread(path) }
version = Digest::SHA256.hexdigest([accounts.owners.inspect, *sources].join)
mark = File.join(folder, "tree.version")
unless File.exist?(mark) && File.read(mark) == version
  FileUtils.rm_rf(tree)
  count = SampleTree.new(tree, accounts.owners).write
  File.write(mark, version)
  warn "Made #{count} sample files"
end
accounts.passwords.each { |name, password| puts "#{name} #{password}" }
