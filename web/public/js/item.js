// The page of a file: copies its path.
for (const button of document.querySelectorAll("[data-copy]")) {
  if (!navigator.clipboard) continue; // only pages that came over TLS or from this machine may
  button.hidden = false;
  button.addEventListener("click", async () => {
    const field = document.getElementById(button.dataset.copy);
    await navigator.clipboard.writeText(field.value);
    document.getElementById("copied").textContent = button.closest("[data-copied]").dataset.copied;
  });
}
