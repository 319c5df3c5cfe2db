# frozen_string_literal: true

require_relative "test_helper"

# What programs get, as docs/web-api.md says.
class APITest < WebTest
  def answer
    JSON.parse(last_response.body)
  end

  def enter(name = "ann", password = name * 2)
    get "/api/session"
    post "/api/session", { "token" => answer["token"], "name" => name, "password" => password }
  end

  def test_logs_in_and_out
    get "/api/session"
    assert_nil answer["user"]
    enter
    assert_equal [200, "ann"], [status, answer["user"]]
    post "/api/session/end", { "token" => answer["token"] }
    get "/api/search", { "q" => "a" }
    assert_equal [401, { "error" => "login" }], [status, answer]
  end

  def test_tells_that_a_password_is_wrong
    enter("ann", "wrong")
    assert_equal [401, { "error" => "refused" }], [status, answer]
  end

  def test_searches
    write("plans/plan.txt", "12 bytes long")
    write("plan.pdf")
    enter
    get "/api/search", { "q" => "plan", "kind" => "Documents" }
    assert_equal [200, 3], [status, answer["total"]]
    documents = answer["groups"].find { |group| group["kind"] == "Documents" }
    item = documents["items"].first
    assert_equal [1, 1, 1], documents.values_at("total", "page", "pages")
    assert_equal ["plan.txt", %w[Tree plans], "public.plain-text", 13],
                 item.values_at("name", "folders", "type", "size")
    assert_in_delta Time.now.to_f, item["modified"], 60
    assert_nil answer["groups"].find { |group| group["kind"] == "PDF Documents" }["items"]
  end

  def test_tells_where_a_query_is_wrong
    enter
    get "/api/search", { "q" => "kMDItemFSSize > 12abc" }
    assert_equal [422, "query", 16, "a number"], [status, *answer.values_at("problem", "offset", "part")]
    get "/api/search", { "q" => "plan date:soon" }
    assert_equal [422, "date", 10, "soon"], [status, *answer.values_at("problem", "offset", "part")]
    get "/api/search", { "q" => " " }
    assert_equal [422, { "error" => "nothing" }], [status, answer]
  end

  def test_tells_of_a_file_and_only_to_who_found_it
    path = write("plan.txt")
    enter
    get "/api/search", { "q" => "plan" }
    id = answer["groups"][0]["items"][0]["id"]
    get "/api/items/#{id}"
    assert_equal ["plan.txt", path, false], answer.values_at("name", "path", "downloadable")
    assert_equal "Plain text", answer["metadata"]["Kind"]
    clear_cookies
    enter("ben")
    get "/api/items/#{id}"
    assert_equal [404, { "error" => "not_found" }], [status, answer]
  end

  def test_lists_what_there_is_to_choose_from
    enter
    get "/api/choices"
    assert_equal [{ "title" => "Tree", "depth" => 0 }], answer["folders"]
    assert_includes answer["kinds"], "PDF Documents"
    assert_empty answer["saved"]
  end

  def test_names_that_are_not_text_are_sent_as_text
    write("a\xFFplan.txt")
    enter
    get "/api/search", { "q" => "plan" }
    assert_equal "a\u{FFFD}plan.txt", answer["groups"][0]["items"][0]["name"]
  end
end
