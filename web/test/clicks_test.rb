# frozen_string_literal: true

require_relative "test_helper"

# What a click on a name does, as each user prefers.
class ClicksTest < WebTest
  def setup
    super
    searched = folder
    searched.download = 1
    settings.searchFolders = [searched]
    write("report.txt")
    log_in
  end

  def test_show_the_item_unless_something_else_is_preferred
    click
    assert_equal 200, status
    assert_includes body, "report.txt"
  end

  def test_download_the_file
    ann.defaultAction = 1
    click
    assert_equal 303, status
    follow_redirect!
    assert_match(/\Aattachment/, last_response["Content-Disposition"])
  end

  def test_show_the_item_when_it_cannot_be_downloaded
    settings.searchFolders.first.download = 0
    ann.defaultAction = 1
    click
    assert_equal 200, status
  end

  def test_open_the_file_where_it_lies
    shared = settings.searchFolders.first
    shared.userDefinedURLPaths = true
    shared.smbURLPath = "smb://host/share"
    ann.defaultAction = 2
    click("Mozilla/5.0 (Windows NT 10.0)", "192.0.2.7")
    assert_equal 303, status
    assert_match(%r{\A(?:smb|file)://}, last_response["Location"])
  end

  def test_find_nothing_that_the_user_may_not_read
    address = first_hit
    File.chmod(0o600, File.join(@tree, "report.txt"))
    [0, 1, 2].each do |action|
      ann.defaultAction = action
      get address
      assert_equal 404, status
    end
  end

  private

  def ann
    VTUser.userWithName("ann")
  end

  def first_hit
    get "/search", { "q" => "report" }
    CGI.unescapeHTML(body[/class="hit" href="([^"]+)"/, 1])
  end

  def click(agent = nil, source = "127.0.0.1")
    get first_hit, {}, { "HTTP_USER_AGENT" => agent, "REMOTE_ADDR" => source }
  end
end
