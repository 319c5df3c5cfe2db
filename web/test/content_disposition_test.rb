# frozen_string_literal: true

require "minitest/autorun"
require_relative "../app/content_disposition"

# The names under which files are offered.
class ContentDispositionTest < Minitest::Test
  def header(name)
    VistaroWeb::ContentDisposition.attachment(name.b)
  end

  def test_hostile_and_foreign_names
    {
      "plain.txt" => %(attachment; filename="plain.txt"; filename*=UTF-8''plain.txt),
      "a b.txt" => %(attachment; filename="a b.txt"; filename*=UTF-8''a%20b.txt),
      "Größe.pdf" => %(attachment; filename="Gro__e.pdf"; filename*=UTF-8''Gr%C3%B6%C3%9Fe.pdf),
      "a\"; filename=\"b.exe" => %(attachment; filename="a__ filename=_b.exe"; ) +
        "filename*=UTF-8''a%22%3B%20filename%3D%22b.exe",
      "a\r\nSet-Cookie: x=1" => %(attachment; filename="a__Set-Cookie: x=1"; ) +
        "filename*=UTF-8''a__Set-Cookie%3A%20x%3D1",
      "../../etc/passwd" => %(attachment; filename=".._.._etc_passwd"; filename*=UTF-8''.._.._etc_passwd),
      "a\\b" => %(attachment; filename="a_b"; filename*=UTF-8''a_b),
      "\u202Egpj.exe" => %(attachment; filename="gpj.exe"; filename*=UTF-8''gpj.exe),
      "\xFF.txt" => %(attachment; filename="_.txt"; filename*=UTF-8''_.txt),
      ".." => %(attachment; filename="file"; filename*=UTF-8''file)
    }.each { |name, expected| assert_equal expected, header(name), name.inspect }
  end

  def test_is_one_line_of_ascii_whatever_the_name
    random = Random.new(7)
    500.times do
      text = header(random.bytes(random.rand(1..40)))
      assert text.ascii_only?
      plain = /\Aattachment; filename="[^"\\\x00-\x1f\x7f]*"; filename\*=UTF-8''/
      assert_match(/#{plain}[\w!$&+.^`|~%#-]*\z/, text)
    end
  end
end
