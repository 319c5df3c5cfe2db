# frozen_string_literal: true

require "date"
require_relative "drawings"
require_relative "office_files"

# What lies in the sample tree: texts, sources, documents, pictures, sound and links of a small office
# of architects, dated over eight years.
#
# Each file is {path:, date:, owner:, mode:, content:} with a String, or {source:, tool:} where a
# program makes it of a drawing or, for sound, of nothing. An owner is :administrator, :guest or :root.
class SampleFiles
  PEOPLE = ["Anna Berger", "Jörg Müller", "Zoë Lefèvre", "Łukasz Wójcik"].freeze
  PROJECTS = ["Harbour Museum", "Lindau Bridge", "Garden School", "Brückenhaus"].freeze
  TOPICS = %w[budget façade schedule materials permits acoustics daylight planting].freeze
  PLACES = ["Lakeside", "Old Town", "North Ridge", "Harbour", "Vineyard", "Quarry"].freeze
  LONG_NAME = "Minutes of the meeting on the schedule of the second construction phase, with the remarks " \
              "of everybody who was there and of those who were not (final, revised, really final).txt"
  MARKUP_NAME = %(<img src=x onerror="alert(1)"> & 'quoted'.txt)
  GROWTH = [8, 9, 7, 12, 11, 14, 15, 13, 17, 18, 20].freeze
  YEARS = (2019..2026)

  # All of them.
  def files
    @files = []
    projects
    minutes
    finance
    photographs
    sounds
    engineering
    names
    private_files
    @files
  end

  private

  def add(path, date, owner: :root, mode: 0o644, **made)
    @files << { path: path, date: Time.utc(*date), owner: owner, mode: mode, **made }
  end

  def projects
    PROJECTS.each_with_index do |project, number|
      documents_of(project, 2020 + number, number)
      drawings_of(project, 2020 + number, number)
    end
  end

  def documents_of(project, year, number)
    folder = "Projects/#{project}"
    author = PEOPLE[number]
    add("#{folder}/Brief.docx", [year, 2, 3, 9, 15], owner: :administrator,
        content: OfficeFiles.docx("#{project}: Brief", paragraphs(project, number), author))
    add("#{folder}/Description of the design.odt", [year, 5, 17, 14, 2], owner: :guest,
        content: OfficeFiles.odt("#{project}: Design", paragraphs(project, number + 3), author))
    add("#{folder}/Areas.xlsx", [year, 6, 30, 11, 40], owner: :administrator,
        content: OfficeFiles.xlsx("Areas", areas(number), author))
    add("#{folder}/Website of the client.webloc", [year, 4, 1, 12],
        content: web_link("https://www.example.org/#{number}"))
  end

  def drawings_of(project, year, number)
    folder = "Projects/#{project}"
    add("#{folder}/Report #{year}.pdf", [year, 11, 20, 16, 5], owner: :administrator, tool: :pdf,
        source: Drawings.page("#{project} #{year}", paragraphs(project, number), GROWTH.rotate(number)))
    add("#{folder}/Site plan.svg", [year, 3, 9, 10], content: Drawings.landscape(number + 40))
    add("#{folder}/Logo.png", [year, 1, 20, 8, 30], tool: :png,
        source: Drawings.logo(project[0], Drawings::SKIES[number][0]))
  end

  def minutes
    YEARS.each do |year|
      [2, 5, 8, 10].each_with_index do |month, number|
        project = PROJECTS[(year + number) % PROJECTS.size]
        add(format("Minutes/%d/Minutes %d-%02d.md", year, year, month), [year, month, 12 + number, 15, 30],
            owner: number.even? ? :administrator : :guest, content: minutes_of(project, year, month))
      end
    end
  end

  def finance
    YEARS.each do |year|
      add("Finance/Budget #{year}.xlsx", [year, 1, 14, 9], owner: :administrator,
          content: OfficeFiles.xlsx("Budget #{year}", areas(year - 2000), PEOPLE[1]))
      add("Finance/Invoices #{year}.csv", [year, 10, 31, 18], owner: :administrator,
          content: invoices(year))
    end
    add("Finance/Annual report 2025.pdf", [2026, 3, 2, 10], owner: :administrator, tool: :pdf,
        source: Drawings.page("Annual report 2025", paragraphs("the office", 9), GROWTH))
  end

  def photographs
    36.times do |number|
      place = PLACES[number % PLACES.size]
      year = YEARS.first + (number % YEARS.count)
      add(format("Photographs/%d/%s %02d.jpg", year, place, number + 1),
          [year, 4 + (number % 6), 3 + (number % 24), 17],
          owner: (number % 3).zero? ? :guest : :administrator,
          tool: :jpeg, source: Drawings.landscape(number))
    end
  end

  def sounds
    add("Music/Bell of the town hall.flac", [2023, 12, 24, 18], tool: :sound, source: 440)
    add("Music/Acoustics, test tone.wav", [2024, 5, 5, 10], tool: :sound, source: 1000)
  end

  def engineering
    add("Engineering/daylight.py", [2024, 9, 3, 11], owner: :guest, content: <<~TEXT)
      """Hours of daylight for a window that faces south."""


      def hours(month):
          return 8 + 8 * min(month, 12 - month) / 6
    TEXT
    add("Engineering/beam.c", [2022, 3, 4, 9], owner: :administrator, content: <<~TEXT)
      /* Deflection of a beam under its own weight, in metres. */
      double deflection(double load, double length, double stiffness) {
        return 5 * load * length * length * length * length / (384 * stiffness);
      }
    TEXT
    add("Engineering/details.html", [2025, 7, 7, 7], content: <<~TEXT)
      <!doctype html>
      <title>Details</title>
      <h1>Details of façades</h1>
    TEXT
    add("Engineering/settings.json", [2026, 2, 2, 2], content: %({ "unit": "metre", "precision": 3 }\n))
  end

  # Names that a page must show as they are.
  def names
    add("Names/Übersicht der Räume.txt", [2025, 8, 1, 9], content: "Alle Räume auf einen Blick.\n")
    add("Names/دليل المبنى.txt", [2025, 8, 2, 9], content: "كل الغرف في لمحة.\n")
    add("Names/תוכנית הגן.txt", [2025, 8, 3, 9], content: "כל החדרים במבט.\n")
    add("Names/計画書.txt", [2025, 8, 4, 9], content: "全室の一覧。\n")
    add("Names/#{MARKUP_NAME}", [2025, 8, 5, 9], content: "Its name holds markup.
")
    add("Names/#{LONG_NAME}", [2025, 8, 6, 9], content: "Its name is long.\n")
  end

  # Each can be read by its owner alone.
  def private_files
    add("Finance/Salaries 2026.xlsx", [2026, 1, 5, 8], owner: :administrator, mode: 0o600,
        content: OfficeFiles.xlsx("Salaries 2026", areas(2), PEOPLE[0]))
    add("Minutes/Notes of the administrator.txt", [2026, 6, 6, 8], owner: :administrator, mode: 0o600,
        content: "Only the administrator can read this.\n")
    add("Minutes/Notes of the guest.txt", [2026, 6, 7, 8], owner: :guest, mode: 0o600,
        content: "Only the guest can read this.\n")
  end

  def paragraphs(subject, number)
    Array.new(6) do |row|
      topic = TOPICS[(row + number) % TOPICS.size]
      "The #{topic} of #{subject} was checked by #{PEOPLE[(row + number) % 4]} and agreed upon."
    end
  end

  def areas(number)
    [["Room", "Area in m²"]] + Array.new(12) { |row| ["Room #{row + 1}", 12 + ((row * (number + 5)) % 43)] }
  end

  def invoices(year)
    lines = (1..20).map { |number| "#{year}-#{number};#{PROJECTS[number % 4]};#{number * 137}\n" }
    "number;client;amount\n#{lines.join}"
  end

  def minutes_of(project, year, month)
    "# Minutes of #{Date::MONTHNAMES[month]} #{year}\n\n*#{project}*\n\n" +
      paragraphs(project, month + year).map { |text| "- #{text}\n" }.join
  end

  def web_link(address)
    <<~XML
      <?xml version="1.0" encoding="UTF-8"?>
      <plist version="1.0"><dict><key>URL</key><string>#{address}</string></dict></plist>
    XML
  end
end
