// Asks how a message under way is doing until it has ended.
const state = document.getElementById("state");

async function look() {
  const answer = await fetch(state.dataset.state, { cache: "no-store" });
  if (!answer.ok) return;
  const text = await answer.text();
  if (text.trim() !== state.innerHTML.trim()) state.innerHTML = text;
  if (state.querySelector("[data-sending]")) setTimeout(look, 500);
}

setTimeout(look, 300);
