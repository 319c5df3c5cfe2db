// A look at a file without leaving the results.

const dialog = document.getElementById("preview");

// Shows the picture of the file that `link` leads to; space and Escape close it again.
export function showPreview(link) {
  const picture = dialog.querySelector("img");
  const address = new URL(link.href);
  picture.src = `${address.pathname}/preview`;
  dialog.querySelector("figcaption").textContent = link.textContent.trim();
  picture.alt = link.textContent.trim();
  dialog.showModal();
}

dialog.addEventListener("keydown", (event) => {
  if (event.key !== " ") return;
  event.preventDefault();
  event.stopPropagation(); // the result has the focus again, and would show its preview
  dialog.close();
});
dialog.addEventListener("click", (event) => {
  if (event.target === dialog) dialog.close();
});
dialog.addEventListener("close", () => dialog.querySelector("img").removeAttribute("src"));
