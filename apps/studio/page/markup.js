// Texts of effects: <br>, <b>, <i> and the codes &b, &n and &cRRGGBB; nothing else of them is markup.

export function marked(text) {
  const fragment = document.createDocumentFragment();
  let bold = false, italic = false;
  for (const part of text.split(/(<\/?[a-z]+>|&c[0-9a-f]{6}|&[bn](?![a-z]))/i)) {
    const code = part.toLowerCase();
    if (code === "<br>") fragment.append(document.createElement("br"));
    else if (code === "<b>" || code === "&b") bold = true;
    else if (code === "</b>" || code === "&n") bold = false;
    else if (code === "<i>") italic = true;
    else if (code === "</i>") italic = false;
    else if (/^<\/?[a-z]+>$|^&c[0-9a-f]{6}$/.test(code)) continue;
    else if (part) {
      let node = document.createTextNode(part);
      for (const name of [italic && "i", bold && "b"].filter(Boolean)) {
        const wrap = document.createElement(name);
        wrap.append(node);
        node = wrap;
      }
      fragment.append(node);
    }
  }
  return fragment;
}

export const plain = (text) => {
  const box = document.createElement("p");
  box.append(marked(text.replaceAll(/<br>/gi, " ")));
  return box.textContent.replace(/\s+/g, " ").trim();
};

/** A label whose "&" marks the letter that chooses the field; {text, key, node}. */
export function label(text) {
  const node = document.createElement("span");
  let key = null, shown = "";
  for (let i = 0; i < text.length; ++i) {
    if (text[i] === "&" && i + 1 < text.length && text[i + 1] !== "&" && !key) {
      const letter = document.createElement("u");
      letter.textContent = key = text[++i];
      node.append(letter);
      shown += key;
      continue;
    }
    if (text[i] === "&" && text[i + 1] === "&") ++i;
    node.append(text[i]);
    shown += text[i];
  }
  return { text: shown, key, node };
}

/** An element with properties and children. */
export function make(name, properties = {}, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key.startsWith("on")) element.addEventListener(key.slice(2), value);
    else if (key in element && !key.includes("-")) element[key] = value;
    else element.setAttribute(key, value);
  }
  element.append(...children.filter((child) => child !== null && child !== undefined));
  return element;
}
