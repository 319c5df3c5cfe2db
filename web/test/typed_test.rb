# frozen_string_literal: true

require_relative "test_helper"

# What may be typed into the field.
class TypedTest < WebTest
  def names_for(typed)
    get "/search", { "q" => typed, "kind" => "" }
    body.scan(%r{class="hit"[^>]*><bdi>(.*?)</bdi>}).flatten.sort
  end

  def test_short_names
    write("plan.txt")
    write("plan.pdf", "x" * 5000)
    old = write("old plan.txt")
    File.utime(Time.new(2019, 4, 1), Time.new(2019, 4, 1), old)
    log_in
    {
      "plan" => ["old plan.txt", "plan.pdf", "plan.txt"],
      "kind:pdf" => ["plan.pdf"], "kind:PDF plan" => ["plan.pdf"],
      "size:>4kb" => ["plan.pdf"], "size:1..10b" => ["old plan.txt", "plan.txt"], "size:5kb" => ["plan.pdf"],
      "modified:2019" => ["old plan.txt"], "modified:2019-04" => ["old plan.txt"], "modified:2019-05" => [],
      "modified:today" => ["plan.pdf", "plan.txt"], "modified:<2020 plan" => ["old plan.txt"],
      "modified:heute" => ["plan.pdf", "plan.txt"], "name:old" => ["old plan.txt"],
      "\"modified:2019\"" => [], "nonsense:plan" => []
    }.each { |typed, names| assert_equal names, names_for(typed), typed }
  end

  def test_what_is_no_value_is_marked
    log_in
    get "/search", { "q" => "plan size:big <b>" }
    assert_includes body, "“big” is not a number"
    assert_includes body, "plan size:<mark>big &lt;b&gt;</mark>"
    assert_includes body, 'aria-invalid="true"'
  end

  def test_a_wrong_query_is_marked_where_it_is_wrong
    log_in
    get "/search", { "q" => 'kMDItemFSName == "größe" && kMDItemFSSize > <x>' }
    assert_includes body, "<mark>&lt;x&gt;</mark>"
  end

  def test_says_that_text_is_not_looked_at_as_long_as_it_is_not
    write("plan.txt")
    log_in
    get "/search", { "q" => "plan" }
    assert_equal !TypedSearch.queryFor("plan")["asksForText"], body.include?("not indexed yet")
    get "/search", { "q" => 'kMDItemFSName == "plan*"' }
    refute_includes body, "not indexed yet"
  end
end
