# frozen_string_literal: true

require "minitest/mock"
require_relative "test_helper"

# Changing the settings file, which the command changes too.
class SettingsChangeTest < WebTest
  Change = VistaroWeb::SettingsChange

  def test_waits_for_whoever_holds_the_lock
    steps = Thread::Queue.new
    lock = File.open("#{VTSettings.settingsStoragePath}.lock", File::RDWR | File::CREAT, 0o600)
    lock.flock(File::LOCK_EX)
    waiting = Thread.new { Change.make { steps << :changed } }
    Thread.pass until waiting.status == "sleep"
    steps << :released
    lock.close
    waiting.join
    assert_equal %i[released changed], [steps.pop, steps.pop]
  end

  def test_gives_up_when_the_lock_is_held_too_long
    File.open("#{VTSettings.settingsStoragePath}.lock", File::RDWR | File::CREAT, 0o600) do |lock|
      lock.flock(File::LOCK_EX)
      times = [0, Change::LONGEST_WAIT + 1]
      Change.stub(:now, -> { times.shift }) do
        assert_equal :busy, assert_raises(Change::Failed) { Change.make { flunk } }.reason
      end
    end
  end

  def test_changes_nothing_when_something_fails_on_the_way
    settings.setValue("kept", forKey: "something")
    assert_raises(RuntimeError) do
      Change.make do |changed|
        changed.setValue("lost", forKey: "something")
        raise "on the way"
      end
    end
    assert_equal "kept", settings.valueForKey("something")
    assert settings.saveSettingsOnChanges
    settings.reloadConfig
    assert_equal "kept", settings.valueForKey("something")
  end

  def test_tells_what_cannot_be_written
    settings.saveStorage
    folder = File.dirname(VTSettings.settingsStoragePath)
    FileUtils.rm_rf(folder)
    File.write(folder, "in the way")
    assert_equal :unwritable, assert_raises(Change::Failed) { Change.make { nil } }.reason
  end

  def test_follows_no_link_in_place_of_the_lock
    target = File.join(@folder, "target")
    File.symlink(target, "#{VTSettings.settingsStoragePath}.lock")
    assert_equal :unwritable, assert_raises(Change::Failed) { Change.make { flunk } }.reason
    refute_path_exists target
  end

  def test_keeps_asking_for_the_restart_that_is_still_due
    Change.make { |changed| changed.mailEnabled = true }
    assert settings.serverRestartNecessary
    Change.make { |changed| changed.setValue("x", forKey: "something") }
    assert settings.serverRestartNecessary
  end
end
