# frozen_string_literal: true

require "fileutils"
require "openssl"

module VistaroWeb
  # The certificate by which the server shows who it is: a PEM file with the private key, the
  # certificate and those that vouch for it.
  module Certificate
    # Raised with what is wrong, for whoever starts the server.
    class Unusable < StandardError
    end

    TEST_NAME = "TestCertificate.pem"
    TEST_DAYS = 365

    class << self
      # The path of the PEM file that the settings want: the administrator's own, or a test certificate,
      # which is made when there is none that is good for another day. Raises Unusable.
      def path(settings)
        return test_certificate(settings) if [true, 1, "1"].include?(settings.useSSLTestCertificate)

        path = settings.sslCertificatePath.to_s
        raise Unusable, "no certificate is named in the settings" if path.empty?

        checked(path)
      end

      # The path of a PEM file that can be used as it is. Raises Unusable.
      def checked(path)
        pem = File.read(path)
        certificate = OpenSSL::X509::Certificate.new(pem)
        unless certificate.check_private_key(OpenSSL::PKey.read(pem))
          raise Unusable, "#{path}: the private key is not that of the certificate"
        end
        raise Unusable, "#{path}: the certificate has expired" if certificate.not_after < Time.now

        path
      rescue SystemCallError => e
        raise Unusable, e.message
      rescue OpenSSL::OpenSSLError
        raise Unusable, "#{path}: this is no PEM file with a private key and a certificate"
      end

      private

      def test_certificate(settings)
        path = File.join(File.dirname(VistaroRuby::VTSettings.settingsStoragePath), TEST_NAME)
        make(path, settings.serverName.to_s) unless good?(path)
        path
      end

      def good?(path)
        OpenSSL::X509::Certificate.new(File.read(path)).not_after > Time.now + 86_400
      rescue SystemCallError, OpenSSL::OpenSSLError
        false
      end

      def make(path, name)
        key = OpenSSL::PKey::EC.generate("prime256v1")
        pem = key.to_pem + signed(key, name).to_pem
        beside = "#{path}.new"
        FileUtils.rm_f(beside)
        File.write(beside, pem, perm: 0o600, mode: File::WRONLY | File::CREAT | File::EXCL)
        File.rename(beside, path)
      end

      def signed(key, name)
        certificate = OpenSSL::X509::Certificate.new
        certificate.version = 2
        certificate.serial = OpenSSL::BN.rand(128)
        certificate.subject = OpenSSL::X509::Name.new([["CN", "Vistaro test certificate"]])
        certificate.issuer = certificate.subject
        certificate.public_key = key
        certificate.not_before = Time.now - 60
        certificate.not_after = Time.now + (TEST_DAYS * 86_400)
        extend_with_names(certificate, name)
        certificate.sign(key, OpenSSL::Digest.new("SHA256"))
      end

      def extend_with_names(certificate, name)
        factory = OpenSSL::X509::ExtensionFactory.new(certificate, certificate)
        names = ["DNS:localhost", "IP:127.0.0.1", "IP:::1"]
        names.unshift("DNS:#{name}") if name.match?(/\A[A-Za-z0-9.-]{1,253}\z/)
        certificate.add_extension(factory.create_extension("basicConstraints", "CA:FALSE", true))
        certificate.add_extension(factory.create_extension("extendedKeyUsage", "serverAuth"))
        certificate.add_extension(factory.create_extension("subjectAltName", names.uniq.join(",")))
      end
    end
  end
end
