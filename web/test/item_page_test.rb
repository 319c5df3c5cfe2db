# frozen_string_literal: true

require_relative "test_helper"

# The page of a file, its pictures and its download.
class ItemPageTest < WebTest
  def setup
    super
    searched = folder
    searched.download = 1
    settings.searchFolders = [searched]
  end

  # The address of the page of the file called so, which a search finds first.
  def address_of(name)
    get "/search", { "q" => "\"#{name}\"" }
    body[%r{href="(/item/[\w-]+)}, 1]
  end

  def test_tells_what_is_known_of_a_file
    write("sub/plan.txt", "words")
    log_in
    get address_of("plan")
    assert_includes body, "<h1><bdi>plan.txt</bdi></h1>"
    assert_includes body, "<li><bdi>Tree</bdi></li><li><bdi>sub</bdi></li>"
    assert_includes body, "5 bytes"
    assert_includes body, "Download"
  end

  def test_tells_the_type_in_the_visitors_language
    { "plan.txt" => ["Plain text", "Reiner Text"], "photo.jpg" => ["JPEG image", "JPEG-Bild"],
      "drawing.afdesign" => ["Affinity Designer document", "Affinity-Designer-Dokument"],
      "disk.vhd" => ["Virtual disk (VHD)", "Festplattenabbild"] }.each do |name, (english, german)|
      write(name)
      log_in
      address = address_of(name)
      get address
      assert_match(%r{<dt>Kind</dt><dd><bdi>#{Regexp.escape(english)}</bdi>}, body)
      get address, {}, { "HTTP_ACCEPT_LANGUAGE" => "de" }
      assert_match(%r{<dt>Art</dt><dd><bdi>#{german}</bdi>}, body)
    end
  end

  def test_shows_nothing_that_means_nothing_to_people
    write("photo.jpg")
    FileUtils.mkdir(File.join(@tree, "photos"))
    log_in
    %w[photo.jpg photos].each do |name|
      get address_of(name)
      facts = body.scan(%r{<dt>([^<]*)</dt><dd><bdi>([^<]*)</bdi>})
      refute_empty facts
      refute_match(/result group|tree|_kMD/i, facts.map(&:first).join(" "), facts.inspect)
      facts.each { |title, value| refute_empty value, title }
    end
  end

  def test_downloads_the_bytes
    bytes = Random.bytes(300_000)
    write("data.bin", bytes)
    log_in
    get "#{address_of('data')}/download"
    assert_equal bytes, last_response.body.b
    assert_equal "attachment; filename=\"data.bin\"; filename*=UTF-8''data.bin",
                 last_response["Content-Disposition"]
    assert_equal "300000", last_response["Content-Length"]
  end

  def test_downloads_a_range
    write("letters.txt", "abcdefghij")
    log_in
    address = "#{address_of('letters')}/download"
    { "bytes=2-4" => "cde", "bytes=7-" => "hij", "bytes=-2" => "ij" }.each do |range, part|
      get address, {}, { "HTTP_RANGE" => range }
      assert_equal [206, part], [status, body], range
    end
    get address, {}, { "HTTP_RANGE" => "bytes=10-" }
    assert_equal 416, status
    assert_equal "bytes */10", last_response["Content-Range"]
  end

  def test_a_range_of_another_version_gives_all_of_it
    write("letters.txt", "abcdefghij")
    log_in
    get "#{address_of('letters')}/download", {}, { "HTTP_RANGE" => "bytes=2-4", "HTTP_IF_RANGE" => '"old"' }
    assert_equal [200, "abcdefghij"], [status, body]
  end

  def test_is_gone_when_the_right_to_read_is
    skip "only root can search on behalf of others" unless Process.euid.zero?
    path = write("plan.txt")
    log_in
    address = address_of("plan")
    File.chmod(0o600, path)
    ["", "/download", "/thumbnail", "/preview"].each do |part|
      get address + part
      assert_equal 404, status, part
    end
  end

  def test_is_gone_when_its_folder_is_no_longer_searched
    write("plan.txt")
    log_in
    address = address_of("plan")
    settings.searchFolders = [folder("Other", @root)]
    get address
    assert_equal 404, status
  end

  def test_follows_no_link_that_took_the_place_of_a_file_or_folder
    path = write("sub/plan.txt")
    secret = File.join(@folder, "plan.txt")
    File.write(secret, "secret")
    log_in
    address = address_of("plan")
    File.unlink(path)
    File.symlink(secret, path)
    get "#{address}/download"
    assert_equal 404, status
    FileUtils.rm_rf(File.dirname(path))
    File.symlink(@folder, File.dirname(path))
    get "#{address}/download"
    assert_equal 404, status
  end

  def test_opens_regular_files_alone
    path = write("plan.txt")
    log_in
    address = address_of("plan")
    File.unlink(path)
    File.mkfifo(path)
    get "#{address}/download"
    assert_equal 404, status
  end

  def test_downloads_only_where_the_settings_allow_it
    write("plan.txt")
    log_in
    address = address_of("plan")
    settings.searchFolders = [folder]
    get address
    assert_includes body, "cannot be downloaded"
    get "#{address}/download"
    assert_equal 404, status
  end

  def test_ids_of_other_sessions_mean_nothing
    write("plan.txt")
    log_in
    address = address_of("plan")
    clear_cookies
    log_in("ben")
    get address
    assert_equal 404, status
    refute_equal address, address_of("plan")
  end

  def test_paths_are_no_ids
    log_in
    ["/etc/passwd", "..", "%2e%2e%2f%2e%2e%2fetc%2fpasswd", "a" * 22].each do |id|
      get "/item/#{Rack::Utils.escape_path(id)}/download"
      assert_equal 404, status, id
    end
  end

  def test_makes_pictures_and_asks_for_the_right_each_time
    path = write("plan.txt", "Some text to draw\n" * 20)
    log_in
    address = address_of("plan")
    %w[thumbnail preview].each do |picture|
      get "#{address}/#{picture}"
      assert_equal [200, "image/png"], [status, last_response["Content-Type"]], picture
      assert last_response.body.b.start_with?("\x89PNG".b)
      assert_equal "private, no-cache", last_response["Cache-Control"]
      get "#{address}/#{picture}", {}, { "HTTP_IF_NONE_MATCH" => last_response["ETag"] }
      assert_includes [200, 304], status # a preview is made anew
    end
    next_user_may_not_see(path, address) if Process.euid.zero?
  end

  # The picture is there already, and the right to see it is not.
  def next_user_may_not_see(path, address)
    File.chmod(0o600, path)
    get "#{address}/thumbnail"
    assert_equal 404, status
  end

  def test_a_thumbnail_is_sent_once_while_it_stays_the_same
    write("plan.txt", "Some text to draw\n" * 20)
    log_in
    address = address_of("plan")
    get "#{address}/thumbnail"
    get "#{address}/thumbnail", {}, { "HTTP_IF_NONE_MATCH" => last_response["ETag"] }
    assert_equal [304, ""], [status, body]
  end

  def test_what_has_no_picture_is_shown_by_its_icon
    write("odd.zip", "no archive")
    log_in
    get "#{address_of('odd')}/thumbnail"
    follow_redirect! if status == 303
    assert_equal 200, status
    assert_match(%r{\Aimage/}, last_response["Content-Type"])
  end
end
