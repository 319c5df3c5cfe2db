# frozen_string_literal: true

# What it costs Ruby to ask the library: a getter, over a C method that does nothing, and the records
# of one page of results, new to Ruby each time, with all their values. Limits: 0.3 µs and 0.2 ms.

require "fileutils"
require "tmpdir"
require "VistaroRuby"

# The benchmarks, and what they need.
module RubyBench
  GETTER_LIMIT = 3e-7
  PAGE_LIMIT = 2e-4
  CALLS = 200_000
  PAGES = 400
  PER_PAGE = 25
  FOLDERS = ["etc", "tmp", "Library/Application Support", "Library/Caches"].freeze

  module_function

  # The best of some runs, in seconds each: what else the machine does only adds.
  def seconds_of(times)
    Array.new(7) do
      GC.start
      start = Process.clock_gettime(Process::CLOCK_MONOTONIC)
      yield
      (Process.clock_gettime(Process::CLOCK_MONOTONIC) - start) / times
    end.min
  end

  def report(name, seconds, limit)
    reached = seconds <= limit
    puts format("%-40s %9.3f us  limit %.2f us  ratio %.2f  %s",
                name, seconds * 1e6, limit * 1e6, seconds / limit, reached ? "ok" : "MISSED")
    reached
  end

  def seconds_of_calls(receiver, name)
    seconds_of(CALLS) do
      i = 0
      while i < CALLS
        receiver.public_send(name)
        i += 1
      end
    end
  end

  # The cost of calling `name` over that of a method in C that does nothing, called the same way.
  def getter(receiver, name)
    cost = seconds_of_calls(receiver, name) - seconds_of_calls(receiver, :itself)
    report("#{receiver.class.name.split('::').last}##{name}", cost, GETTER_LIMIT)
  end

  def group_of(records)
    VistaroRuby::VTSearchResult.alloc.initWithGroupKind(
      VistaroRuby::VTSearchKind.defaultKind,
      results: records, searchFolders: nil, attributeKeys: [], user: nil
    )
  end

  # Records such as a search makes.
  def records(count)
    Array.new(count) do |i|
      { "kMDItemPath" => "/srv/projects/report #{i}.pdf", "kMDItemDisplayName" => "report #{i}.pdf",
        "kMDItemContentModificationDate" => Time.now, "kMDItemContentTypeTree" => ["com.adobe.pdf"],
        "kMDItemFSSize" => 1000 + i, "kMDItemLastUsedDate" => Time.now }
    end
  end

  def page(group, number)
    first = number * PER_PAGE
    (first...(first + PER_PAGE)).map do |index|
      record = group.results[index]
      record.keys.map { |key| record[key] }
    end
  end

  def pages
    group = group_of(records(PAGES * PER_PAGE))
    cost = seconds_of(PAGES) { PAGES.times { |number| page(group, number) } }
    report("Page of #{PER_PAGE} records", cost, PAGE_LIMIT)
  end

  def getters
    settings = VistaroRuby::VTSettings.sharedInstance
    group = group_of(records(PER_PAGE))
    %i[searchCount logFile serverPort].map { |name| getter(settings, name) } +
      %i[count title groupKind results].map { |name| getter(group, name) }
  end

  # Settings and accounts of its own, in an empty folder.
  def in_own_root
    Dir.mktmpdir("vistaro-") do |root|
      FileUtils.mkdir_p(FOLDERS.map { |name| File.join(root, name) })
      File.write(File.join(root, "etc/passwd"), "root:x:0:0:System:/root:/bin/sh\n")
      File.write(File.join(root, "etc/group"), "root:x:0:\n")
      ENV["VISTARO_ROOT"] = root
      yield
    end
  end

  def run
    in_own_root { [*getters, pages].all? }
  end
end

exit(RubyBench.run ? 0 : 1)
