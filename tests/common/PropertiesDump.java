import java.io.FileInputStream;
import java.io.IOException;
import java.io.InputStreamReader;
import java.io.Reader;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Properties;

// Loads each file named on the command line with java.util.Properties through a UTF-8 reader
// and prints "== FILE", then one "key<TAB>value" line per key, sorted, with every character
// outside printable ASCII, and the backslash, written as \\uXXXX (UTF-16 units); or "!! malformed"
// when the file does not load.
public class PropertiesDump {
    static String escape(String text) {
        StringBuilder out = new StringBuilder();
        for (char c : text.toCharArray()) {
            if (c >= 0x20 && c < 0x7f && c != '\\') {
                out.append(c);
            } else {
                out.append(String.format("\\u%04X", (int) c));
            }
        }
        return out.toString();
    }

    public static void main(String[] args) throws IOException {
        StringBuilder out = new StringBuilder();
        for (String file : args) {
            out.append("== ").append(file).append('\n');
            Properties properties = new Properties();
            try (Reader reader =
                    new InputStreamReader(new FileInputStream(file), StandardCharsets.UTF_8)) {
                properties.load(reader);
            } catch (IllegalArgumentException e) {
                out.append("!! malformed\n");
                continue;
            }
            List<String> lines = new ArrayList<>();
            for (String key : properties.stringPropertyNames()) {
                lines.add(escape(key) + "\t" + escape(properties.getProperty(key)));
            }
            Collections.sort(lines);
            for (String line : lines) {
                out.append(line).append('\n');
            }
        }
        System.out.print(out);
    }
}
