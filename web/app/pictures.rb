# frozen_string_literal: true

module VistaroWeb
  # The pictures that the library keeps of files. To be called with the library entered, for an item
  # that its user may read.
  class Pictures
    INDEX = Item::INDEX

    def initialize(item)
      @item = item
      @group = item.group
    end

    # The picture in the list of thumbnails, opened; made if need be. Nil when none can be made.
    def thumbnail
      @group.buildThumbnailForItemAtIndex(INDEX) unless @group.thumbnailFileExistsForItemAtIndex(INDEX)
      opened(@group.thumbnailPathForItemAtIndex(INDEX))
    end

    # The large picture, opened; nil when none can be made. The file is the user's only one, and the
    # next preview replaces it: what is open stays.
    def preview
      opened(@group.buildPreviewForItemAtIndex(INDEX))
    end

    private

    def opened(path)
      ItemFile.new(IO.sysopen(path, File::RDONLY | File::NOFOLLOW)) if path
    rescue SystemCallError
      nil
    end
  end
end
