# frozen_string_literal: true

require "digest"
require "zlib"
require_relative "test_helper"

# Thumbnails and previews, made by the real worker.
class ImagesTest < WorldTest
  MORNING = Time.utc(2026, 3, 1, 9)

  def test_thumbnails_of_a_group_are_made_and_stay_valid
    paths = %w[a.png b.png].map { |name| picture(name) }
    group = pictures
    refute group.thumbnailFileExistsForItemAtIndex(0)
    assert_nil group.buildThumbnails
    assert_equal paths.map { |path| thumbnail(path) }.sort,
                 [0, 1].map { |index| group.thumbnailPathForItemAtIndex(index) }.sort
    assert_equal [128, 64], size(thumbnail(paths[0]))
    File.utime(Time.now + 60, Time.now + 60, paths[0])
    assert_nil group.validThumbnailForFile(paths[0], inTargetDirectory: folder_of_thumbnails)
    assert_equal thumbnail(paths[1]),
                 group.validThumbnailForFile(paths[1], inTargetDirectory: folder_of_thumbnails)
  end

  def test_small_thumbnails_are_files_of_their_own
    path = picture("a.png")
    group = pictures
    group.buildThumbnailsFromIndex(0, toIndex: 0, inSmallVersion: true)
    assert group.thumbnailFileExistsForItemAtIndex(0, inSmallVersion: true)
    refute group.thumbnailFileExistsForItemAtIndex(0)
    name = group.thumbnailFileNameForItemAtIndex(0, inSmallVersion: true)
    assert_equal group.smallThumbnailFileNameForFile(path), name
    small = File.join(folder_of_thumbnails, name)
    assert_equal small, group.validThumbnailForFile(
      path, inTargetDirectory: folder_of_thumbnails, inSmallVersion: true
    )
    assert_equal 65, size(small).max
  end

  def test_names_are_digests_of_paths
    digest = Digest::MD5.hexdigest("/a")
    group = pictures_by_hand(["/a"])
    assert_equal "#{digest}.png", group.thumbnailFileNameForFile("/a")
    assert_equal "#{digest}_small.png", group.smallThumbnailFileNameForFile("/a")
    assert_equal "#{digest}.png", group.thumbnailFileNameForItemAtIndex(0)
  end

  def test_single_files_and_lists_of_them
    path = picture("a.png")
    group = pictures_by_hand([path])
    refute group.buildThumbnailForFile(nil)
    assert group.buildThumbnailForFile(path)
    assert group.thumbnailFileExistsForItemAtIndex(0)
    assert group.buildThumbnailsForFiles([path], inSmallVersion: true)
    assert group.thumbnailFileExistsForItemAtIndex(0, inSmallVersion: true)
    assert group.buildThumbnailForItemAtIndex(0)
    assert group.buildThumbnailsForFiles(["/no/such/file"])
    assert_raises(IndexError) { group.buildThumbnailsFromIndex(1, toIndex: 0) }
    assert_raises(IndexError) { pictures_by_hand([]).thumbnailFileNameForItemAtIndex(0) }
  end

  def test_names_that_are_not_utf8
    path = picture("a\xFF.png".b)
    group = pictures
    assert group.buildThumbnailsForFiles([path])
    assert_equal thumbnail(path), group.thumbnailPathForItemAtIndex(0)
  end

  def test_a_preview_is_made_for_the_user
    path = picture("a.png", 2000, 1000)
    group = pictures_by_hand([path], user: ann)
    preview = group.buildPreviewForItemAtIndex(0)
    assert_equal File.join(settings.cacheDirectory, "Preview-ann.png"), preview
    assert_equal [1024, 512], size(preview)
    assert_nil pictures_by_hand([path]).buildPreviewForItemAtIndex(0)
  end

  def test_a_picture_of_any_size
    path = picture("a.png", 400, 100)
    target = File.join(@folder, "target.png")
    group = pictures_by_hand([path])
    assert group.buildThumbnailForFile(path, targetFile: target, iconMode: false, width: 200.0, height: 200)
    assert_equal [200, 50], size(target)
    refute group.buildThumbnailForFile_targetFile_iconMode_width_height(
      path, File.join(@folder, "no/such/folder/x.png"), false, 10, 10
    )
  end

  def test_other_threads_run_while_pictures_are_made
    group = pictures_by_hand(Array.new(4) { |i| picture("#{i}.png", 1500, 1500) })
    turns = 0
    other = Thread.new { loop { turns += 1 } }
    Thread.pass while turns.zero?
    before = turns
    group.buildThumbnails
    assert_operator turns, :>, before
  ensure
    other&.kill
  end

  private

  def pictures
    search('kMDItemFSName == "*.png"').resultWithGroupName("Images")
  end

  def pictures_by_hand(paths, user: nil)
    kind = VTSearchKind.kindForContentTypes(["public.image"])
    VTSearchResult.alloc.initWithGroupKind(
      kind, results: paths.map { |path| { "kMDItemPath" => path } }, searchFolders: [folder],
            attributeKeys: ["kMDItemPath"], user: user
    )
  end

  def folder_of_thumbnails
    settings.thumbnailCacheDirectory
  end

  def thumbnail(path)
    File.join(folder_of_thumbnails, "#{Digest::MD5.hexdigest(path)}.png")
  end

  # A grey picture that was made in the past.
  def picture(name, width = 400, height = 200)
    header = [width, height, 8, 0, 0, 0, 0].pack("N2C5")
    pixels = Zlib.deflate("\0#{"\x80" * width}".b * height)
    chunks = { "IHDR" => header, "IDAT" => pixels, "IEND" => "" }.map do |type, data|
      [data.bytesize].pack("N") + type + data + [Zlib.crc32(type + data)].pack("N")
    end
    path = write(name, "\x89PNG\r\n\x1a\n".b + chunks.join)
    File.utime(MORNING, MORNING, path)
    path
  end

  def size(path)
    File.binread(path, 8, 16).unpack("N2")
  end
end
