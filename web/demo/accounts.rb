# frozen_string_literal: true

require "etc"
require "fileutils"
require "securerandom"

# The accounts of a root prefix: an administrator and a guest with passwords made anew each time, and
# with user ids that nobody on the machine has.
class Accounts
  NAMES = %w[administrator guest].freeze
  FULL_NAMES = { "administrator" => "Anna Berger", "guest" => "Jörg Müller" }.freeze
  FIRST_ID = 61_200
  STAFF = 61_199

  attr_reader :passwords

  # Ids are kept from one time to the next as long as the machine has not given them to anybody.
  def initialize(root)
    @folder = File.join(root, "etc")
    @ids = NAMES.zip(free_ids).to_h
    @passwords = NAMES.to_h { |name| [name, SecureRandom.alphanumeric(12)] }
  end

  # Writes passwd, group and shadow.
  def write
    FileUtils.mkdir_p(@folder, mode: 0o755)
    replace("passwd", 0o644, ["root:x:0:0:System:/:/bin/false"] + NAMES.map do |name|
      "#{name}:x:#{@ids[name]}:#{@ids[name]}:#{FULL_NAMES[name]}:/nonexistent:/bin/false"
    end)
    replace("group", 0o644, ["root:x:0:", "admin:x:80:administrator", "staff:x:#{STAFF}:#{NAMES.join(',')}"] +
                            @ids.map { |name, id| "#{name}:x:#{id}:" })
    replace("shadow", 0o600, ["root:*:19000:0:99999:7:::"] + @passwords.map do |name, password|
      "#{name}:#{hash_of(password)}:19000:0:99999:7:::"
    end)
  end

  # User and group id of each owner in the sample tree.
  def owners
    { root: [0, 0], administrator: [@ids["administrator"], STAFF], guest: [@ids["guest"], STAFF] }
  end

  private

  def free_ids
    (FIRST_ID..).lazy.reject { |id| taken?(id) }.first(NAMES.size)
  end

  def taken?(id)
    Etc.getpwuid(id)
  rescue ArgumentError
    false
  end

  # SHA-512 crypt, which every libcrypt knows.
  def hash_of(password)
    password.crypt("$6$#{SecureRandom.alphanumeric(16)}$")
  end

  def replace(name, mode, lines)
    path = File.join(@folder, name)
    File.write("#{path}.new", "#{lines.join("\n")}\n", perm: mode)
    File.rename("#{path}.new", path)
  end
end
