// Makes a reader from a description of a format: node compile.js LANGUAGE DESCRIPTION FOLDER. Prints the files made.
const fs = require("fs");
const path = require("path");
const Compiler = require("kaitai-struct-compiler");
const yaml = require("yaml");

const [language, description, folder] = process.argv.slice(2);

new Compiler()
  .compile(language, yaml.parse(fs.readFileSync(description, "utf8")), null, false)
  .then((files) => {
    for (const [name, text] of Object.entries(files)) {
      const file = path.join(folder, name);
      fs.writeFileSync(file, text);
      console.log(file);
    }
  })
  .catch((error) => {
    console.error(`${description}: no reader in ${language}:`, error);
    process.exit(1);
  });
