# frozen_string_literal: true

require "cgi"
require_relative "zip_archive"

# Office documents as their programs write them, cut down to what those need in order to open them.
module OfficeFiles
  HEAD = %(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)
  PACKAGE = "http://schemas.openxmlformats.org/package/2006"
  DOCUMENT = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
  WORDS = "http://schemas.openxmlformats.org/wordprocessingml/2006/main"
  CELLS = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
  DUBLIN_CORE = "http://purl.org/dc/elements/1.1/"
  OFFICE_TYPE = "application/vnd.openxmlformats-officedocument"
  PACKAGE_TYPE = "application/vnd.openxmlformats-package"
  ODT_TYPE = "application/vnd.oasis.opendocument.text"
  ODF = "urn:oasis:names:tc:opendocument:xmlns"

  module_function

  # A text document of these paragraphs, below its title.
  def docx(title, paragraphs, author)
    body = [title, *paragraphs].map { |text| "<w:p><w:r><w:t>#{escape(text)}</w:t></w:r></w:p>" }
    package("word/document.xml", "#{OFFICE_TYPE}.wordprocessingml.document.main+xml", title, author)
      .add("word/document.xml",
           xml("w:document", { "xmlns:w" => WORDS }, "<w:body>#{body.join}</w:body>"))
      .to_s
  end

  # A workbook of one sheet; a row is an array of texts and numbers.
  def xlsx(title, rows, author)
    sheet = "xl/worksheets/sheet1.xml"
    data = rows.map { |row| "<row>#{row.map { |value| cell(value) }.join}</row>" }
    package("xl/workbook.xml", "#{OFFICE_TYPE}.spreadsheetml.sheet.main+xml", title, author,
            sheet => "#{OFFICE_TYPE}.spreadsheetml.worksheet+xml")
      .add("xl/workbook.xml", xml("workbook", { "xmlns" => CELLS, "xmlns:r" => DOCUMENT },
                                  '<sheets><sheet name="Sheet 1" sheetId="1" r:id="rId1"/></sheets>'))
      .add("xl/_rels/workbook.xml.rels", relationships("#{DOCUMENT}/worksheet" => "worksheets/sheet1.xml"))
      .add(sheet, xml("worksheet", { "xmlns" => CELLS }, "<sheetData>#{data.join}</sheetData>"))
      .to_s
  end

  # An OpenDocument text of these paragraphs, below its title.
  def odt(title, paragraphs, author)
    body = [title, *paragraphs].map { |text| "<text:p>#{escape(text)}</text:p>" }
    names = { "xmlns:office" => "#{ODF}:office:1.0", "xmlns:text" => "#{ODF}:text:1.0",
              "xmlns:dc" => DUBLIN_CORE, "office:version" => "1.2" }
    ZipArchive.new
              .add("mimetype", ODT_TYPE, stored: true)
              .add("content.xml", xml("office:document-content", names,
                                      "<office:body><office:text>#{body.join}</office:text></office:body>"))
              .add("meta.xml", xml("office:document-meta", names,
                                   "<office:meta>#{core(title, author)}</office:meta>"))
              .add("META-INF/manifest.xml", manifest)
              .to_s
  end

  def manifest
    types = { "/" => ODT_TYPE, "content.xml" => "text/xml", "meta.xml" => "text/xml" }
    entries = types.map { |path, type| %(<m:file-entry m:full-path="#{path}" m:media-type="#{type}"/>) }
    xml("m:manifest", { "xmlns:m" => "#{ODF}:manifest:1.0", "m:version" => "1.2" }, entries.join)
  end

  # The parts that every package has; `parts` are those beside the main one, with their types.
  def package(main, type, title, author, parts = {})
    properties = "docProps/core.xml"
    types = { main => type, properties => "#{PACKAGE_TYPE}.core-properties+xml" }.merge(parts)
    list = types.map { |path, kind| %(<Override PartName="/#{path}" ContentType="#{kind}"/>) }
    rels = %(<Default Extension="rels" ContentType="#{PACKAGE_TYPE}.relationships+xml"/>)
    ZipArchive.new
              .add("[Content_Types].xml",
                   xml("Types", { "xmlns" => "#{PACKAGE}/content-types" }, rels + list.join))
              .add("_rels/.rels",
                   relationships("#{DOCUMENT}/officeDocument" => main,
                                 "#{PACKAGE}/relationships/metadata/core-properties" => properties))
              .add(properties, xml("cp:coreProperties",
                                   { "xmlns:cp" => "#{PACKAGE}/metadata/core-properties",
                                     "xmlns:dc" => DUBLIN_CORE }, core(title, author)))
  end

  def relationships(targets)
    list = targets.each_with_index.map do |(type, target), index|
      %(<Relationship Id="rId#{index + 1}" Type="#{type}" Target="#{target}"/>)
    end
    xml("Relationships", { "xmlns" => "#{PACKAGE}/relationships" }, list.join)
  end

  def core(title, author)
    "<dc:title>#{escape(title)}</dc:title><dc:creator>#{escape(author)}</dc:creator>"
  end

  def cell(value)
    return "<c><v>#{value}</v></c>" if value.is_a?(Numeric)

    %(<c t="inlineStr"><is><t>#{escape(value)}</t></is></c>)
  end

  def xml(element, attributes, content)
    list = attributes.map { |name, value| %( #{name}="#{value}") }
    "#{HEAD}<#{element}#{list.join}>#{content}</#{element}>"
  end

  def escape(text)
    CGI.escapeHTML(text)
  end
end
