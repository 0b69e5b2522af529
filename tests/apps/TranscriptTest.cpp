#include "tests/Hashes.h"
#include "tests/apps/ProgramFixture.h"

#include <regex>

struct Transcript : ProgramFixture
{
    /// Forty frames of hundredths of a kelvin: warm things in noise and stripes, one of which moves, and bad
    /// pixels; a shutter; colours of the visual sensor; palettes.
    void writeInputs() const
    {
        const auto number = [](int n) { return std::to_string(n / 10) + std::to_string(n % 10); };
        for (int n = 0; n < 40; ++n) {
            Frame frame = matrixOf<unsigned short>({64, 48}, [&](int r, int c) {
                return 29500 + 6 * textureAt(900 + 3 * c, 900 + 3 * r, 50) + noiseOf(c, r, n) / 6 +
                       noiseOf(c, 0, 0) / 9;
            });
            frame(cv::Rect(5 + n, 20, 9, 7)) += 900;
            frame(cv::Rect(40, 30, 6, 12)) += 700;
            frame(33, 7) = 0;
            frame(9, 50) = 31800;
            write("in/" + number(n) + ".png", frame);
            write("shutter/" + number(n) + ".pgm", matrixOf<unsigned short>({64, 48}, [&](int r, int c) {
                      return 29000 + 40 * (n / 20) + noiseOf(c, r, -1) + noiseOf(c, r, n) / 9;
                  }));
        }
        std::string bytes;
        for (int i = 0; i < 3 * 256; ++i)
            bytes += static_cast<char>(noiseOf(i, 0, 0) * 3);
        write("sensor.raw", bytes.substr(0, 2 * 16 * 8));
        write("p.act", bytes);
        write("p.lut", bytes);
        write("p.gpl",
              "GIMP Palette\nName: Three\nColumns: 3\n#\n  0  10 200\tone\n 90  80  70\ttwo\n250 5 0\n");
        write("p.csv", "0,128,255\n10,20,30\n");
        write("p.pal", "JASC-PAL\r\n0100\r\n2\r\n1 2 3\r\n200 100 50\r\n");
        write("colours.ppm", "P6\n16 8\n255\n" + bytes.substr(0, 3 * 16 * 8));
        write("list.csv", "x,y\n3,4\n63,47\n10,0\n");
    }

    std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
            if (entry.is_regular_file())
                all[entry.path().lexically_relative(folder.path())] = contentOf(entry.path());
        return all;
    }

    /// Of what a command says and of the files that it writes; of a PNG the pixels, of a film nothing.
    /// @param said  the beginning of what it says
    unsigned hashOfCall(const std::string& arguments, std::string& said) const
    {
        const auto before = files();
        const bool lists = arguments.compare(0, 8, "palettes") == 0; // also those that other tests have read
        ProgramRun run = lists ? shell(arguments) : call(arguments);
        // Not how long it takes, nor digits that machines may round otherwise.
        run.output =
            std::regex_replace(run.output, std::regex("us_per_frame\": [^,}]*|(\\.\\d\\d\\d)\\d+"), "$1");
        said = (run.output + run.errors).substr(0, 2000);
        unsigned hash = hashOf(run.output + run.errors, static_cast<unsigned>(run.code));
        for (const auto& [name, content] : files())
            if (const auto was = before.find(name); was == before.end() || was->second != content) {
                hash = hashOf(name, hash);
                if (name.find(".png") != name.npos)
                    hash = hashOf(cv::Mat_<unsigned short>(stored(name).reshape(1)), hash);
                else if (name.find(".mkv") == name.npos)
                    hash = hashOf(content, hash);
            }
        return hash;
    }
};

TEST_F(Transcript, IsTheSameWhateverCompilesAndRunsIt)
{
    writeInputs();
    const std::pair<const char*, unsigned> rows[] = {
        {"noise in", 3153727240},
        {"noise in/0*.png --skip 3 --json --celsius", 2886066230},
        {"noise in --compare --out both.png", 952367851},
        {"noise in --compare --temporal 8:1800 --spatial 4 --csv --unit kelvin/64", 2063397952},
        {"render in --out r --range lock --legend --palette Rainbow --tone plateau --scale 2", 3523256672},
        {"render in/03.png --out one.png --celsius --region 22:23:00FF00 --isotherm above:28:FF0000 --legend "
         "--scale 6",
         1451664109},
        {"render in/03.png --out one.png --rows 4:40 --humidity 21:50 --legend --scale 9", 299428215},
        {"render in/03.png --out fine.png --detail 5", 3341492124},
        {"blobs in --above 30100 --out b", 2623760847},
        {"blobs in --celsius --below 20 --min-size 1 --scale 4 --out b", 1914472548},
        {"measure in --spot 8,23 --spot 30,30:4.5 --box 38,28,10,16 --line 0,0,63,47 --polygon "
         "5,5,30,9,12,40 "
         "--delta box1-spot2 --plot plot.png --overlay over --scale 5 --histogram 9",
         832006517},
        {"measure in/1?.png --celsius --degrees F --csv --whole --csv-frames frames --emissivity 0.8",
         1668939611},
        {"measure in --unit kelvin/64 --degrees K --json --histogram 3 --spot 0,0 --spot 9,9:1 --delta "
         "spot1-spot2",
         3848815564},
        {"measure in/0?.png --unit planck:21106,1501,1,-7340,0.0125 --plot p.png --overlay low --legend "
         "--csv-frames tables",
         2760849017},
        {"clean in --out all.tiff --celsius --celsius-float", 1935528511},
        {"clean in --out all.npy --denoise strong --celsius", 4074543286},
        {"clean all.npy --out all.raw --temporal 4:1700 --pattern 40:3:2", 4158401355},
        {"clean all.raw --raw 64x48:be --out c --format pgm", 779020852},
        {"clean in --out - --rows 0:2", 2001655198},
        {"clean in --out all.mkv --flat missing.npy", 1241708878},
        {"clean in --out all.mkv --bad-pixels auto --unit decikelvin", 43977356},
        {"clean all.mkv --out back.tiff", 776110374},
        {"measure all.tiff --csv --box 0,0,9,9", 1308712802},
        {"pixels find in --out map.pgm", 2394059781},
        {"pixels find in/00.png --shutter shutter --out shut.pgm --json --force", 1667972473},
        {"pixels detect in --spread 2 --monotony --out seen.pgm --force", 1257457735},
        {"pixels detect --netd shutter/[01]?.pgm 16 shutter/*.pgm 20 --netd-tolerance 0.1:0.2:0.3 --out "
         "netd.pgm",
         2188949998},
        {"pixels merge map.pgm list.csv --out merged.png", 126430802},
        {"pixels merge list.csv --size 64x48 --out merged.npy", 4191168439},
        {"pixels merge p.act map.pgm --out merged.csv", 3735913440},
        {"pixels merge one.png --out merged.csv", 1325627703},
        {"pixels diff map.pgm merged.npy --out diff.png", 2622889849},
        {"pixels records merged.png --out records.pgm", 3240043999},
        {"pixels show records.pgm", 2746863662},
        {"flat learn shutter/[01]?.pgm --out flat.npy", 1504258806},
        {"flat learn shutter/[01]?.pgm --other shutter/*.pgm --out two.npy --csv", 1598697683},
        {"clean in/05.png --flat flat.npy --bad-pixels records.pgm --out flat.pgm", 403011809},
        {"undistort --make -0.2,0.02,50,50,31,23 --size 64x48 --out lens.pam", 3090010457},
        {"undistort in --map lens.pam --out straight.npy", 1511677352},
        {"convert sensor.raw --raw 16x8 --from yuyv --to png --out yuyv.png", 913311631},
        {"convert sensor.raw --raw 16x8 --from uyvy --to yuv2 --out uyvy.yuv", 572448864},
        {"convert sensor.raw --raw 16x8 --from uy1vy0 --to ycbcr --out old.ycbcr", 2023971109},
        {"convert colours.ppm --from png --to yuv2 --out colours.yuv", 3568770941},
        {"palettes", 3761354734},
        {"palettes --json --out sheet.png", 2020223626},
        {"palettes import p.act --name Act --out act.xml", 2387772109},
        {"palettes import p.lut --name Lut --out lut.xml", 1874721329},
        {"palettes import p.gpl --name Gpl --out gpl.xml", 1342661444},
        {"palettes import p.pal --name Pal --out pal.xml", 2650958894},
        {"palettes import p.csv --name Csv --out csv.xml", 126569578},
        {"palettes --csv --file csv.xml", 736428748},
        {"palettes export ironbow --out ironbow.xml", 889215899},
        {"render in/00.png --palette-file gpl.xml --out gpl.png", 1945716355},
        {"demo --json --out demo --record demo.npy", 1654733174},
        {"settings --palette Sepia --denoise", 3004697670},
        {"settings --legend --above 3 --tone local", 768470846},
    };
    for (const auto& [arguments, expected] : rows) {
        std::string said;
        const unsigned hash = hashOfCall(arguments, said);
        EXPECT_EQ(hash, expected) << arguments << '\n' << said;
    }
}
