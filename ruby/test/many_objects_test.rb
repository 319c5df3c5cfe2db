# frozen_string_literal: true

require_relative "test_helper"

# Objects without end.
class ManyObjectsTest < WorldTest
  def resident
    File.read("/proc/self/status")[/^VmRSS:\s+(\d+)/, 1].to_i
  end

  def make(count)
    records = [{ "kMDItemPath" => "/a" }]
    count.times do
      VTSearchResult.alloc.initWithGroupKind_results_searchFolders_attributeKeys_user(
        nil, records, nil, nil, nil
      ).results[0]["kMDItemPath"]
    end
  end

  def test_a_million_results_need_no_more_memory_than_a_few
    make(100_000)
    before = resident
    make(900_000)
    assert_operator resident, :<, before * 1.25
  end
end
