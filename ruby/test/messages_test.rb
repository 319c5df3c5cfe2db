# frozen_string_literal: true

require_relative "test_helper"

# Which messages there are, by the list beside this file.
class MessagesTest < Minitest::Test
  Message = Struct.new(:owner, :level, :keyed) do
    def name
      keyed.delete_suffix(":").tr(":", "_")
    end

    def keywords
      keyed.split(":")
    end

    # Something that is sent the message.
    def receiver
      constant = VistaroRuby.const_get(owner)
      return constant.alloc if level == "-"

      constant.is_a?(Class) ? Class.new(constant) : constant.dup
    end

    def to_s
      "#{level} #{owner} #{keyed}"
    end
  end

  MESSAGES = File.readlines(File.join(__dir__, "messages.txt"), chomp: true)
                 .reject { |line| line.start_with?("#") || line.empty? }
                 .map { |line| Message.new(*line.split) }

  def test_list_is_read
    assert_operator MESSAGES.size, :>, 200
  end

  def test_each_is_answered_by_its_underscored_name
    missing = MESSAGES.reject { |message| message.receiver.respond_to?(message.name) }
    assert_empty missing.map(&:to_s)
  end

  def test_each_of_several_keywords_is_answered_by_its_form_with_keywords
    several = MESSAGES.select { |message| message.keywords.size > 1 }
    assert_operator several.size, :>, 10
    several.each do |message|
      receiver = message.receiver
      receiver.define_singleton_method(message.name) { |*arguments| arguments }
      first, *later = message.keywords
      keywords = later.each_with_index.to_h { |keyword, index| [keyword.to_sym, index + 1] }
      expected = [0, *keywords.values]
      assert_equal expected, receiver.public_send(first, 0, **keywords), message.to_s
      assert_equal expected, receiver.public_send(first, 0, **keywords.to_a.reverse.to_h), message.to_s
    end
  end

  def test_each_setter_is_an_assignment_too
    MESSAGES.each do |message|
      next unless message.keyed.match?(/\Aset[^:]*:\z/)

      assignment = message.keyed.delete_prefix("set").delete_suffix(":").sub(/\A./, &:downcase)
      assert_respond_to message.receiver, "#{assignment}=", message.to_s
    end
  end

  def test_unknown_keywords_are_refused
    error = assert_raises(ArgumentError) do
      VistaroRuby::VTUser.userWithName("ann", secret: "x")
    end
    assert_match(/secret/, error.message)
  end

  def test_groups_and_folders_are_search_folders
    assert_operator VistaroRuby::VTSearchFolderGroup, :<, VistaroRuby::VTSearchFolder
    assert_operator VistaroRuby::VTConcreteSearchFolder, :<, VistaroRuby::VTSearchFolder
  end
end
