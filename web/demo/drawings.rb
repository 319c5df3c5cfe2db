# frozen_string_literal: true

require "cgi"

# Pictures as SVG, each drawn from a number, so that the same number gives the same picture.
module Drawings
  SKIES = [%w[#1b2a49 #f2a65a], %w[#264653 #e9c46a], %w[#355070 #eaac8b], %w[#0b3954 #bfd7ea],
           %w[#3d348b #f7b801], %w[#5f0f40 #fb8b24], %w[#2d6a4f #d8f3dc], %w[#343a40 #ced4da]].freeze

  module_function

  # Hills before an evening sky, 1200 x 800.
  def landscape(number)
    random = Random.new(number)
    top, bottom = SKIES[number % SKIES.size]
    sun = %(cx="#{random.rand(200..1000)}" cy="#{random.rand(160..360)}" r="#{random.rand(40..90)}")
    svg(1200, 800, <<~SVG)
      <defs><linearGradient id="sky" x2="0" y2="1">
        <stop stop-color="#{top}"/><stop offset="0.75" stop-color="#{bottom}"/>
      </linearGradient></defs>
      <rect width="1200" height="800" fill="url(#sky)"/>
      <circle #{sun} fill="#fff6d6" fill-opacity="0.85"/>
      #{(0..4).map { |row| hill(random, row, top) }.join}
    SVG
  end

  def hill(random, row, colour)
    height = 470 + (row * 62)
    points = (0..12).map { |column| "#{column * 100},#{height - random.rand(90)}" }
    %(<polygon points="0,800 #{points.join(' ')} 1200,800" fill="#{colour}" ) +
      %(fill-opacity="#{0.35 + (row * 0.15)}"/>)
  end

  # A page in the format A4 with a heading, lines of text and a chart of these values below them.
  def page(title, lines, values)
    text = lines.each_with_index.map do |line, row|
      %(<text x="60" y="#{170 + (row * 22)}" font-size="13">#{CGI.escapeHTML(line)}</text>)
    end
    svg(595, 842, <<~SVG)
      <rect width="595" height="842" fill="#ffffff"/>
      <g font-family="DejaVu Sans" fill="#20242b">
        <text x="60" y="110" font-size="24" font-weight="bold">#{CGI.escapeHTML(title)}</text>
        <path d="M60 130H535" stroke="#3461a8" stroke-width="2"/>
        #{text.join}
      </g>
      #{bars(values)}
    SVG
  end

  def bars(values)
    largest = values.max
    values.each_with_index.map do |value, column|
      height = (260.0 * value / largest).round(1)
      %(<rect x="#{60 + (column * 40)}" y="#{760 - height}" width="28" height="#{height}" fill="#3461a8"/>)
    end.join
  end

  # A round sign with a letter, 256 x 256.
  def logo(letter, colour)
    svg(256, 256, <<~SVG)
      <circle cx="128" cy="128" r="120" fill="#{colour}"/>
      <text x="128" y="172" font-size="128" font-family="DejaVu Sans" font-weight="bold" fill="#ffffff"
        text-anchor="middle">#{letter}</text>
    SVG
  end

  def svg(width, height, content)
    %(<svg xmlns="http://www.w3.org/2000/svg" width="#{width}" height="#{height}" ) +
      %(viewBox="0 0 #{width} #{height}">\n#{content}</svg>\n)
  end
end
