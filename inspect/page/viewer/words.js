// Numbers and names as the page shows them, and elements made of text.

export const count = (value) => value.toLocaleString("en-US");
export const counted = (value, one, several) => `${count(value)} ${value === 1 ? one : several}`;

// A length with as many digits as one reads.
export function length(value) {
  const size = Math.abs(value);
  const isExtreme = size !== 0 && (size >= 1e7 || size < 1e-3);
  const digits = isExtreme
    ? size.toExponential(2)
    : size.toLocaleString("en-US", { maximumFractionDigits: size >= 100 ? 1 : 3 });
  return (value < 0 ? "−" : "") + digits;
}

// Characters that would change the order of others, or show nothing, become visible.
export const visible = (name) =>
  name.replace(
    /[\u0000-\u001f\u007f-\u009f\u200e\u200f\u2028-\u202e\u2066-\u2069]/g,
    (unit) => `\\u${unit.charCodeAt(0).toString(16).toUpperCase().padStart(4, "0")}`,
  );

export function element(tag, properties = {}, ...children) {
  const { dataset, ...others } = properties;
  const made = Object.assign(document.createElement(tag), others);
  Object.assign(made.dataset, dataset);
  made.append(...children);
  return made;
}

// Appends rows to a list, a part at a time, with a button for the next part.
export function appendRows(list, rowCount, makeRow, partSize, from = 0) {
  const to = Math.min(rowCount, from + partSize);
  for (let row = from; row < to; ++row) {
    list.append(makeRow(row));
  }
  if (to < rowCount) {
    const more = element("button", {
      type: "button",
      textContent: `Show ${count(Math.min(partSize, rowCount - to))} more of ${count(rowCount - to)}`,
    });
    const holder = element("li", { className: "more", role: "none" }, more);
    more.addEventListener("click", (event) => {
      event.stopPropagation();
      holder.remove();
      appendRows(list, rowCount, makeRow, partSize, to);
    });
    list.append(holder);
  }
}
