# frozen_string_literal: true

require "timeout"
require_relative "test_helper"

# Several threads, one library.
class ThreadsTest < WorldTest
  # A change that stops in the middle, in an observer's block, until it is let go on.
  class HaltedChange
    attr_reader :order

    def initialize(settings)
      @order = []
      @entered = Queue.new
      @leave = Queue.new
      observation = settings.observe("serverName") do |_, phase|
        @order << phase
        halt if phase == :will
      end
      @thread = Thread.new { settings.serverName = "changed" }
      @entered.pop
      @observation = observation
    end

    def finish
      @leave << true
      @thread.join
      @observation.cancel
    end

    private

    def halt
      @entered << true
      @leave.pop
    end
  end

  def test_a_call_waits_for_a_change_that_is_under_way
    change = HaltedChange.new(settings)
    reader = Thread.new do
      settings.serverName.tap { change.order << :read }
    end
    Thread.pass until reader.stop?
    change.finish
    assert_equal "changed", reader.value
    assert_equal %i[will did read], change.order
  end

  def test_who_waits_can_be_killed
    change = HaltedChange.new(settings)
    reader = Thread.new { settings.serverName }
    Thread.pass until reader.stop?
    reader.kill.join
    change.finish
    assert_equal "changed", settings.serverName
  end

  def test_who_waits_can_run_out_of_time
    change = HaltedChange.new(settings)
    assert_raises(Timeout::Error) { Timeout.timeout(0.01) { settings.serverName } }
    change.finish
    assert_equal "changed", settings.serverName
  end

  def test_who_changes_can_be_killed
    settings.observe("serverName") { Queue.new.pop }
    changer = Thread.new { settings.serverName = "changed" }
    Thread.pass until changer.stop?
    changer.kill.join
    assert_equal "changed", settings.serverName
  end

  def test_objects_that_are_dropped_meanwhile_go_afterwards
    directories = Array.new(20) { DirServiceWrapper.alloc.init }
    change = HaltedChange.new(settings)
    directories.clear
    5.times { GC.start }
    change.finish
    refute_nil DirServiceWrapper.alloc.init
  end

  def test_other_threads_run_during_a_search
    300.times { |i| write("#{i}.txt", "some words " * 20_000) }
    gaps = gaps_while { search('kMDItemTextContent == "nowhere"') }
    assert_operator gaps.size, :>, 3, "the search was too short to tell"
    assert_operator gaps.max, :<, gaps.sum / 2
  end

  def test_a_copy_of_the_process_is_whole_whatever_other_threads_do
    200.times { |i| write("#{i}.txt", "some words " * 20_000) }
    searches = Array.new(2) { Thread.new { search('kMDItemTextContent == "nowhere"') } }
    checks = Array.new(2) { Thread.new { right_password?("wrong") } }
    Thread.pass until searches.any?(&:stop?)
    copies = Array.new(3) { Process.fork { exit!(works?) } }
    assert_equal([true] * 3, copies.map { |copy| ended(copy)&.success? })
    [*searches, *checks].each(&:join)
    assert works?
  end

  # A password takes the system as long as it likes: here some tenths of a second of arithmetic.
  def test_others_go_on_while_a_password_is_looked_at
    hash = "secret".crypt("$6$rounds=500000$saltsalt$")
    File.write(File.join(@root, "etc/shadow"), "ann:#{hash}:19000:0:99999:7:::\n", perm: 0o600)
    VistaroRuby.restart
    checks = [true, false].map { |right| Thread.new { right_password?(right ? "secret" : "wrong") } }
    answered = 0
    answered += 1 while settings.serverPort && checks.all?(&:alive?)
    assert_operator answered, :>, 3
    assert_equal [true, false], checks.map(&:value)
  end

  def test_who_looks_at_a_password_can_be_told_of_changes_afterwards
    told = []
    observation = settings.observe("serverName") { |_, phase| told << phase }
    checks = Array.new(3) { Thread.new { right_password?("wrong") && raise } }
    settings.serverName = "changed"
    checks.each(&:join)
    observation.cancel
    assert_equal %i[will did], told
  end

  def test_searches_of_several_threads_all_find
    20.times { |i| write("#{i}.txt") }
    counts = Array.new(4) do
      Thread.new { Array.new(5) { search('kMDItemFSName == "*.txt"').results.sum(&:count) } }
    end
    assert_equal [20] * 20, counts.flat_map(&:value)
    assert_equal 20, settings.totalSearches
  end

  private

  # Whether settings can be changed and files found.
  def works?
    settings.serverName = "of #{Process.pid}"
    settings.serverName == "of #{Process.pid}" && search('kMDItemFSName == "1.txt"').results.sum(&:count) == 1
  end

  # How the process ended; nil when it hangs.
  def ended(pid)
    Timeout.timeout(20) { Process.wait2(pid).last }
  rescue Timeout::Error
    Process.kill("KILL", pid)
    Process.wait(pid)
    nil
  end

  def right_password?(text)
    VTUser.passwordIsRight(text, forName: "ann")
  end

  # How long this thread waited each time to be run again while another ran the block.
  def gaps_while(&block)
    worker = Thread.new(&block)
    Thread.pass until worker.status
    gaps = []
    last = Process.clock_gettime(Process::CLOCK_MONOTONIC)
    while worker.alive?
      sleep 0.001
      now = Process.clock_gettime(Process::CLOCK_MONOTONIC)
      gaps << (now - last)
      last = now
    end
    gaps
  end
end
