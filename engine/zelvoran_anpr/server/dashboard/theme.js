// Light, dark or as the system says; loaded before the page is drawn so that it never flashes.
{
  const KEY = "zv-anpr-theme";
  const NEXT = { auto: "light", light: "dark", dark: "auto" };
  const root = document.documentElement;

  function apply(theme) {
    root.dataset.theme = theme;
    const button = document.getElementById("theme");
    if (button) button.textContent = `Theme: ${theme}`;
  }

  function stored() {
    const theme = localStorage.getItem(KEY);
    return theme in NEXT ? theme : "auto";
  }

  apply(stored());
  document.addEventListener("DOMContentLoaded", () => {
    apply(stored());
    document.getElementById("theme")?.addEventListener("click", () => {
      localStorage.setItem(KEY, NEXT[stored()]);
      apply(stored());
    });
  });
}
