# frozen_string_literal: true

require_relative "test_helper"

# Blocks that are told of changes.
class ObservingTest < WorldTest
  def test_a_block_is_told_before_and_after
    seen = []
    settings.serverName = "old"
    settings.observe("serverName") { |key, phase| seen << [key, phase, settings.serverName] }
    settings.serverName = "new"
    assert_equal [["serverName", :will, "old"], ["serverName", :did, "new"]], seen
  end

  def test_it_is_told_no_more_once_cancelled
    seen = []
    observation = settings.observe("serverName") { |_, phase| seen << phase }
    settings.serverName = "a"
    observation.cancel
    observation.cancel
    settings.serverName = "b"
    assert_equal %i[will did], seen
  end

  def test_an_observation_goes_on_without_its_token
    seen = []
    settings.observe("serverName") { |_, phase| seen << phase }
    3.times { GC.start }
    settings.serverName = "a"
    assert_equal %i[will did], seen
  end

  def test_dependent_keys_are_told_too
    seen = []
    mine = folder
    mine.observe("afpURLPath") { |key, phase| seen << [key, phase] }
    mine.path = "/x"
    assert_equal [["afpURLPath", :will], ["afpURLPath", :did]], seen
  end

  def test_a_block_may_call_in_again
    settings.observe("serverName") { |_, phase| settings.serverPort = 80 if phase == :did }
    settings.serverName = "a"
    assert_equal 80, settings.serverPort
  end

  def test_a_block_may_cancel_itself_and_observe_anew
    seen = []
    observation = settings.observe("serverName") do
      observation.cancel
      settings.observe("serverName") { |_, phase| seen << phase }
    end
    settings.serverName = "a"
    settings.serverName = "b"
    assert_includes seen, :did
  end

  def test_what_a_block_raises_comes_after_the_change
    settings.observe("serverName") { |_, phase| raise IOError, phase.to_s }
    error = assert_raises(IOError) { settings.serverName = "new" }
    assert_equal "will", error.message
    assert_equal "new", settings.serverName
  end

  def test_the_other_blocks_are_told_all_the_same
    seen = []
    settings.observe("serverName") { raise "first" }
    settings.observe("serverName") { |_, phase| seen << phase }
    assert_raises(RuntimeError) { settings.serverName = "new" }
    assert_equal %i[will did], seen
  end

  def test_a_throw_leaves_once_the_change_is_complete
    settings.observe("serverName") { throw :out, "thrown" }
    assert_equal "thrown", (catch(:out) { settings.serverName = "new" })
    assert_equal "new", settings.serverName
  end

  def test_a_thread_that_is_killed_in_a_block_leaves_the_library_usable
    settings.observe("serverName") { Thread.current.kill }
    Thread.new { settings.serverName = "new" }.join
    assert_equal "new", settings.serverName
    assert_equal 1, Thread.new { settings.searchCount + 1 }.value
  end

  def test_a_block_that_breaks_is_an_error_of_its_own
    settings.observe("serverName") { break }
    assert_raises(LocalJumpError) { settings.serverName = "new" }
    assert_equal "new", settings.serverName
  end

  def test_an_observation_ends_with_its_object
    weak = watched_folder
    10.times { GC.start }
    refute weak.alive, "the block of an object that is gone is kept"
  end

  def test_observe_needs_a_block
    assert_raises(ArgumentError) { settings.observe("serverName") }
  end

  Liveness = Struct.new(:alive)

  # A block keeps all that can be seen where it is made: here that is no object of the library.
  def self.block_that_tells(liveness)
    block = proc {}
    ObjectSpace.define_finalizer(block, end_of(liveness))
    block
  end

  def self.end_of(liveness)
    proc { liveness.alive = false }
  end

  private

  # Folders that nobody holds are made in a thread, so that no stack frame keeps one by chance.
  def watched_folder
    liveness = Liveness.new(true)
    Thread.new { 10.times { watch(folder, liveness) } }.join
    liveness
  end

  def watch(watched, liveness)
    watched.observe("title", &self.class.block_that_tells(liveness))
  end
end
