# frozen_string_literal: true

require_relative "test_helper"

# Digests, encodings and the cipher.
class UtilitiesTest < WorldTest
  def test_digests_of_bytes_and_texts
    assert_equal "9dd4e461268c8034f5c8564e155c67a6", CocoaCryptoHashing.md5HexHash("x")
    assert_equal "9dd4e461268c8034f5c8564e155c67a6", CocoaCryptoHashing.md5HexHash("x".b)
    assert_equal Encoding::BINARY, CocoaCryptoHashing.md5Hash("x").encoding
    assert_equal 20, CocoaCryptoHashing.sha1Hash("x").bytesize
    assert_nil CocoaCryptoHashing.sha1HexHash("a\xFF")
    assert_equal 40, CocoaCryptoHashing.sha1HexHash("a\xFF".b).size
  end

  def test_base64
    assert_equal "AP8=", Base64.base64Encoding("\x00\xFF")
    assert_equal "\x00\xFF".b, Base64.dataWithBase64EncodedString("AP8=")
    assert_nil Base64.dataWithBase64EncodedString("ü")
    assert_equal "YWJj\n", HexDump.encodeBase64("abc")
    assert_equal "YWJj", HexDump.encodeBase64WithNewlines("abc", false)
    assert_equal "abc", HexDump.decodeBase64("YWJj\n")
    assert_equal "abc", HexDump.decodeBase64WithNewLines("YWJj", false)
    assert_equal "00ff", HexDump.hexval("\x00\xFF".b)
    assert_match(/61 ?62/, HexDump.hexdump("ab"))
  end

  def test_encrypt_without_argument_is_not_encrypt_with_nil
    crypto = SSCrypto.alloc.initWithSymmetricKey("key")
    crypto.clearTextWithString = "Grüße"
    plain = crypto.encrypt
    named = crypto.encrypt(nil)
    assert_equal 0, plain.bytesize % 16
    assert_equal named, crypto.encrypt("bf-cbc")
    refute_equal plain, named
    assert_equal "Grüße", crypto.decrypt(nil).force_encoding("UTF-8")
    assert_equal "Grüße", crypto.clearTextAsString
    assert_raises(ArgumentError) { crypto.encrypt("a", "b") }
  end

  def test_keys_are_made
    key = SSCrypto.getKeyDataWithLength(16, fromPassword: "p", withSalt: "s", withIterations: 1000)
    assert_equal key, SSCrypto.getKeyDataWithLength(16, fromPassword: "p", withSalt: "s")
    assert_equal 24, SSCrypto.getKeyDataWithLength(24).bytesize
    assert_equal CocoaCryptoHashing.md5Hash("x"), SSCrypto.getMD5ForData("x")
    crypto = SSCrypto.alloc.init
    assert_nil crypto.encrypt
    crypto.setSymmetricKey(key)
    crypto.isSymmetric = true
    crypto.setClearTextWithData("x")
    assert_equal 16, crypto.digest(nil).bytesize
  end

  def test_the_password_of_the_mail_server_is_kept
    settings.smtpServerPassword = "geheim ü"
    assert_equal "geheim ü", settings.smtpServerPassword
    refute_includes File.read(VTSettings.settingsStoragePath), "geheim"
  end
end
